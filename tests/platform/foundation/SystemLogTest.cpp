#include "SystemLog.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

/// What is written to standard error while the object lives.
class CapturedStandardError final
{
public:
    CapturedStandardError()
        : m_file(std::tmpfile())
        , m_saved(::dup(STDERR_FILENO))
    {
        ::dup2(::fileno(m_file), STDERR_FILENO);
    }

    ~CapturedStandardError()
    {
        restore();
        std::fclose(m_file);
    }

    CapturedStandardError(const CapturedStandardError&) = delete;
    CapturedStandardError& operator=(const CapturedStandardError&) = delete;

    QByteArray text()
    {
        restore();
        std::rewind(m_file);
        std::array<char, 4096> buffer = {};
        return QByteArray(buffer.data(),
                          qsizetype(std::fread(buffer.data(), 1, buffer.size(), m_file)));
    }

private:
    void restore()
    {
        if (m_saved >= 0) {
            ::dup2(m_saved, STDERR_FILENO);
            ::close(m_saved);
            m_saved = -1;
        }
    }

    std::FILE* m_file;
    int m_saved;
};

TEST(SystemLog, anEntryIsAPlainLineOnStandardError)
{
    CapturedStandardError captured;
    systemLog(u"Found 3 images with issues, 100% of \"Zoë\""_s);
    EXPECT_EQ(captured.text(), "Found 3 images with issues, 100% of \"Zoë\"\n");
}

TEST(SystemLog, anEntryOfSeveralLinesStaysOneEntry)
{
    CapturedStandardError captured;
    systemLog(u"first\nsecond %@"_s);
    EXPECT_EQ(captured.text(), "first\nsecond %@\n");
}

TEST(SystemLog, aProgramsOwnHandlerGetsTheEntryWithTheCategory)
{
    static thread_local QStringList seen;
    seen.clear();
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext& context, const QString& message) {
            seen.append(QString::fromLatin1(context.category) + u'|' + QString::number(type) +
                        u'|' + message);
        });
    systemLog(u"an entry"_s);
    qInstallMessageHandler(before);
    EXPECT_EQ(seen, QStringList{u"corvane|%1|an entry"_s.arg(int(QtInfoMsg))});
}

TEST(SystemLog, withoutAJournalTheJournalsSideDoesNothing)
{
    CapturedStandardError captured;
    sendToSystemJournal(u"for the journal alone"_s);
    EXPECT_EQ(captured.text(), "");
}

} // namespace
