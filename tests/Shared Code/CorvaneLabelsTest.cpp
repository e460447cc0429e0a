#include "ScanFixture.h"

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

// Which label texts a scan waits for: only the last two of a completed run.

namespace
{

/// A label text, and the start of a line that only a scan writes that is past it: a call of the
/// photo application or something told to the controller.
struct LabelText {
    const char* line;
    const char* next;
    bool isWaitedFor{false};
};

void PrintTo(const LabelText& text, std::ostream* stream)
{
    *stream << '"' << text.line << '"';
}

class LabelsTest : public ScanFixture, public testing::WithParamInterface<LabelText>
{
protected:
    void holdAtLabel()
    {
        using namespace std::chrono_literals;
        m_delegate.holdMainThreadAt(
            QString::fromLatin1(GetParam().line),
            [this] { return isPast(QString::fromLatin1(GetParam().next)); },
            GetParam().isWaitedFor ? 100ms : 5000ms);
    }

    [[nodiscard]] bool isPast(const QString& start) const
    {
        const QStringList lines = m_told->lines() + m_library.calls();
        return std::ranges::any_of(
            lines, [&start](const QString& line) { return line.startsWith(start); });
    }
};

using CompletedScanLabelsTest = LabelsTest;

TEST_P(CompletedScanLabelsTest, onlyTheLastTwoAreWaitedFor)
{
    addPicture(u"a.jpg"_s);
    holdAtLabel();
    scan({1});
    EXPECT_EQ(m_delegate.wentOn(), !GetParam().isWaitedFor);
}

INSTANTIATE_TEST_SUITE_P(EveryText,
                         CompletedScanLabelsTest,
                         testing::Values(LabelText{"status Loading Data", "bar.max 1"},
                                         LabelText{"count a.jpg", "photo 1.height"},
                                         LabelText{"status Converting", "album 1.importFrom"},
                                         LabelText{"status Importing", "application.importing"},
                                         LabelText{"status Propagating Metadata",
                                                   "application.lastImportAlbum"},
                                         LabelText{"count ", "status Ready", true},
                                         LabelText{"status Ready", "bar.value 0", true}));

using StoppedScanLabelsTest = LabelsTest;

TEST_P(StoppedScanLabelsTest, noneIsWaitedFor)
{
    holdAtLabel();
    scan({});
    EXPECT_EQ(m_delegate.wentOn(), true);
}

INSTANTIATE_TEST_SUITE_P(EveryText,
                         StoppedScanLabelsTest,
                         testing::Values(LabelText{"count ", "nowProcessing NO"},
                                         LabelText{"status Ready", "nowProcessing NO"}));

} // namespace
