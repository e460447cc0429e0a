#include "ScanFixture.h"

#include <functional>

using namespace Qt::StringLiterals;

// When a scan reads the user's settings.

namespace
{

class ScanSettingsTest : public ScanFixture
{
protected:
    /// Sets the value whenever the scan tells the controller a line that starts so.
    void setAt(const QString& start, const QString& key, bool value)
    {
        m_told->setBeforeLine([this, start, key, value](const QString& line) {
            if (line.startsWith(start)) {
                set(key, value);
            }
        });
    }

    /// Adds a photo whose original is another file than the picture that is shown.
    void addPictureAndMaster(const QString& name)
    {
        const qint64 id = addPicture(name);
        const QString master = makePicture(u"master "_s + name);
        m_library.photo(id).originalPath = master;
        m_library.photo(id).evidence.files.append(master);
    }

    /// Names of the files that the photos' turns read.
    [[nodiscard]] QStringList sources() const
    {
        QStringList names;
        for (const PhotoOutcome& outcome : m_delegate.finished) {
            names.append(QFileInfo(outcome.source).fileName());
        }
        return names;
    }

    /// The album of the first converted photo.
    [[nodiscard]] QString album() const
    {
        return m_delegate.finished.isEmpty() ? QString() : m_delegate.finished.first().album;
    }
};

TEST_F(ScanSettingsTest, theProcessingOptionIsReadOnceTheMachineIsKeptAwake)
{
    addPictureAndMaster(u"a.jpg"_s);
    addPictureAndMaster(u"b.jpg"_s);
    setAt(u"power.create"_s, u"ProcessingOption"_s, true);
    scan({1, 2});
    EXPECT_EQ(sources(), (QStringList{u"master a.jpg"_s, u"master b.jpg"_s}));
}

TEST_F(ScanSettingsTest, theProcessingOptionIsNotReadAgainForAnyPhoto)
{
    addPictureAndMaster(u"a.jpg"_s);
    addPictureAndMaster(u"b.jpg"_s);
    setAt(u"bar.value 1"_s, u"ProcessingOption"_s, true); // before the first photo's file is chosen
    scan({1, 2});
    EXPECT_EQ(sources(), (QStringList{u"a.jpg"_s, u"b.jpg"_s}));
}

TEST_F(ScanSettingsTest, taggingIsReadOnceTheSelectionIsTaken)
{
    addPicture(u"a.jpg"_s);
    setAt(u"timeRemaining "_s, u"TagEnabled"_s, true);
    scan({1});
    EXPECT_TRUE(m_library.calls().contains(u"application.keywords"_s));
    EXPECT_EQ(m_library.photo(1).keywords, QStringList{u"Corvane Original"_s});
    EXPECT_EQ(m_library.photo(2).keywords, QStringList{u"Corvane Processed"_s});
}

TEST_F(ScanSettingsTest, taggingIsNotReadAgainForAnyPhoto)
{
    addPicture(u"a.jpg"_s);
    setAt(u"bar.max"_s, u"TagEnabled"_s, true); // once the keywords would have been verified
    scan({1});
    EXPECT_FALSE(m_library.calls().contains(u"application.keywords"_s));
    EXPECT_TRUE(m_library.photo(1).keywords.isEmpty());
    EXPECT_TRUE(m_library.photo(2).keywords.isEmpty());
}

TEST_F(ScanSettingsTest, removalIsReadWhenTheOriginalHasItsTag)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    set(u"TagEnabled"_s, true);
    m_library.whenCalled(u"photo 2.select"_s, [this] { set(u"TrashEnabled"_s, true); });
    scan({1, 2});
    EXPECT_FALSE(m_library.photo(1).inTrash);
    EXPECT_TRUE(m_library.photo(2).inTrash);
}

TEST_F(ScanSettingsTest, onlyTheLibrarysPathDecidesWhereCopiesAreFiled)
{
    addPicturesOfRolls({u"Beach"_s});
    set(u"AlbumEnabled"_s, false);
    scan({1});
    EXPECT_EQ(album(), u"Beach"_s);
    m_delegate.finished.clear();
    m_delegate.library = std::nullopt;
    set(u"AlbumEnabled"_s, true);
    scan({1});
    EXPECT_EQ(album(), u"Corvane For iPhoto"_s);
}

TEST_F(ScanSettingsTest, theQualityIsReadAnewForEveryPhoto)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.quality = 1.0;
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) { m_delegate.quality = 0.1; };
    scan({1, 2});
    ASSERT_EQ(m_library.imports().size(), 2);
    EXPECT_LT(m_library.imports().at(1).bytes.size(), m_library.imports().at(0).bytes.size());
}

/// A setting of the size that is changed after the first of two photos of 96 x 64 pixels.
struct SizeChange {
    const char* name;
    std::function<void(FakeDelegate&)> before;
    std::function<void(FakeDelegate&)> change;
    QSize first;
    QSize second;
};

void PrintTo(const SizeChange& change, std::ostream* stream)
{
    *stream << change.name;
}

class ScanSizeTest : public ScanFixture, public testing::WithParamInterface<SizeChange>
{
};

TEST_P(ScanSizeTest, isReadAnewForEveryPhoto)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    GetParam().before(m_delegate);
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) { GetParam().change(m_delegate); };
    scan({1, 2});
    ASSERT_EQ(m_delegate.finished.size(), 2);
    EXPECT_EQ(m_delegate.finished.at(0).pixels, GetParam().first);
    EXPECT_EQ(m_delegate.finished.at(1).pixels, GetParam().second);
    ASSERT_EQ(m_library.imports().size(), 2);
    EXPECT_EQ(QImage::fromData(m_library.imports().at(1).bytes).size(), GetParam().second);
}

/// A fixed size of that long and that short side.
std::function<void(FakeDelegate&)>
fixedSize(int longSide, bool longIsLocked, int shortSide, bool shortIsLocked)
{
    return [=](FakeDelegate& delegate) {
        delegate.fixed = true;
        delegate.longSide = longSide;
        delegate.longIsLocked = longIsLocked;
        delegate.shortSide = shortSide;
        delegate.shortIsLocked = shortIsLocked;
    };
}

INSTANTIATE_TEST_SUITE_P(
    EverySetting,
    ScanSizeTest,
    testing::Values(SizeChange{"scaleFactor",
                               [](FakeDelegate&) {},
                               [](FakeDelegate& delegate) { delegate.scale = 0.5F; },
                               QSize(96, 64),
                               QSize(48, 32)},
                    SizeChange{"fixedSize",
                               [](FakeDelegate& delegate) { delegate.longSide = 48; },
                               [](FakeDelegate& delegate) { delegate.fixed = true; },
                               QSize(96, 64),
                               QSize(48, 32)},
                    SizeChange{"longSize",
                               fixedSize(72, true, 0, false),
                               [](FakeDelegate& delegate) { delegate.longSide = 48; },
                               QSize(72, 48),
                               QSize(48, 32)},
                    SizeChange{"shortSize",
                               fixedSize(0, false, 48, true),
                               [](FakeDelegate& delegate) { delegate.shortSide = 32; },
                               QSize(72, 48),
                               QSize(48, 32)},
                    SizeChange{"longLocked",
                               fixedSize(72, true, 32, true),
                               [](FakeDelegate& delegate) { delegate.longIsLocked = false; },
                               QSize(72, 32),
                               QSize(48, 32)},
                    SizeChange{"shortLocked",
                               fixedSize(72, true, 32, true),
                               [](FakeDelegate& delegate) { delegate.shortIsLocked = false; },
                               QSize(72, 32),
                               QSize(72, 48)}));

} // namespace
