#include "PropagateMetadata.h"

#include "FakePhotoApplication.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class PropagateMetadataTest : public testing::Test
{
protected:
    /// Copies from photo 1 to photo 2.
    void propagate()
    {
        const PhotoPtr original = m_library.photoHandle(1);
        const PhotoPtr copy = m_library.photoHandle(2);
        propagateMetadata(
            *original, *copy, *m_library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s));
    }

    void addPhotos(const FakePhotoRecord& original)
    {
        m_library.addPhoto(original);
        m_library.addPhoto(FakePhotoRecord{});
    }

    FakePhotoApplication m_library;
};

TEST_F(PropagateMetadataTest, everyAttributeIsReadFromTheOriginalAndSetOnTheCopyInOrder)
{
    addPhotos({.altitude = 12.5,
               .comment = u"a comment"_s,
               .date = {250000000.25, u"Europe/Berlin"_s},
               .name = u"IMG_1"_s,
               .rating = 4,
               .title = u"a title"_s});
    propagate();
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"photo 1.altitude"_s,
                           u"photo 2.setAltitude 12.5"_s,
                           u"photo 1.comment"_s,
                           u"photo 2.setComment a comment"_s,
                           u"photo 1.date"_s,
                           u"photo 2.setDate 250000000.25 Europe/Berlin"_s,
                           u"photo 1.name"_s,
                           u"photo 2.setName IMG_1"_s,
                           u"photo 1.rating"_s,
                           u"photo 2.setRating 4"_s,
                           u"photo 1.title"_s,
                           u"photo 2.setTitle a title"_s,
                           u"photo 1.keywords"_s}));
    EXPECT_EQ(m_library.photo(2).date, (PhotoDate{250000000.25, u"Europe/Berlin"_s}));
}

TEST_F(PropagateMetadataTest, anAltitudeThatIsNoneIsCopiedAsNone)
{
    addPhotos({});
    m_library.photo(2).altitude = 3.0;
    propagate();
    EXPECT_EQ(m_library.photo(2).altitude, std::nullopt);
}

TEST_F(PropagateMetadataTest, keywordsAreAssignedInOrderWithTheCopySelected)
{
    addPhotos({.keywords = {u"Family"_s, u"Corvane Original"_s, u"Sea"_s}});
    propagate();
    EXPECT_EQ(m_library.calls().mid(12),
              (QStringList{u"photo 1.keywords"_s,
                           u"photo 2.select"_s,
                           u"application.assignKeywordString Family"_s,
                           u"application.assignKeywordString Sea"_s}));
    EXPECT_EQ(m_library.photo(2).keywords, (QStringList{u"Family"_s, u"Sea"_s}));
}

TEST_F(PropagateMetadataTest, onlyTheExactSpellingIsNotCopied)
{
    addPhotos({.keywords = {u"corvane original"_s}});
    propagate();
    EXPECT_EQ(m_library.calls().mid(12),
              (QStringList{u"photo 1.keywords"_s,
                           u"photo 2.select"_s,
                           u"application.assignKeywordString corvane original"_s}));
    EXPECT_EQ(m_library.photo(2).keywords, QStringList{u"corvane original"_s});
}

TEST_F(PropagateMetadataTest, theOneKeywordThatIsNotCopiedStillSelectsTheCopy)
{
    addPhotos({.keywords = {u"Corvane Original"_s}});
    propagate();
    EXPECT_EQ(m_library.calls().mid(12), (QStringList{u"photo 1.keywords"_s, u"photo 2.select"_s}));
}

} // namespace
