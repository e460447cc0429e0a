#include "ScanClosing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Kind = PhotoOutcome::Kind;

namespace
{

/// Photo `id` of the file name IMG_ID.cr2.
ScannedPhoto photo(qint64 id, Kind kind)
{
    ScannedPhoto photo{.id = id, .filename = u"IMG_%1.cr2"_s.arg(id), .outcome = {}};
    photo.outcome.kind = kind;
    return photo;
}

QList<qint64> idsOf(const QList<ScannedPhoto>& photos)
{
    QList<qint64> ids;
    for (const ScannedPhoto& photo : photos) {
        ids += photo.id;
    }
    return ids;
}

} // namespace

TEST(ScanClosing, whatWasReachedAndNotConvertedIsTold)
{
    const ScanClosing closing = ScanClosing::of({photo(1, Kind::Failed),
                                                 photo(2, Kind::Converted),
                                                 photo(3, Kind::Unsupported),
                                                 photo(4, Kind::Missing),
                                                 photo(5, Kind::NotReached)});
    EXPECT_EQ(idsOf(closing.notConverted), (QList<qint64>{1, 3, 4}));
    EXPECT_EQ(idsOf(closing.otherNames), QList<qint64>());
    EXPECT_FALSE(closing.isEmpty());
}

TEST(ScanClosing, whereEveryPhotoWasConvertedNothingIsTold)
{
    EXPECT_TRUE(ScanClosing::of({photo(1, Kind::Converted), photo(2, Kind::Converted)}).isEmpty());
    EXPECT_TRUE(ScanClosing::of({}).isEmpty());
}

TEST(ScanClosing, eachFailureHasAReason)
{
    ScannedPhoto damaged = photo(1, Kind::Failed);
    damaged.outcome.reason = u"it ends early"_s;
    const ScanClosing closing = ScanClosing::of({damaged, photo(2, Kind::Failed)});
    ASSERT_EQ(closing.notConverted.size(), 2);
    EXPECT_EQ(closing.notConverted.at(0).outcome.reason, u"it ends early"_s);
    EXPECT_EQ(closing.notConverted.at(1).outcome.reason, u"no reason was given"_s);
}

TEST(ScanClosing, aCopyThatBearsTheNameOfAnotherPhotoIsTold)
{
    ScannedPhoto own = photo(1, Kind::Converted);
    own.outcome.importedAs = u"IMG_1.jpg"_s;
    ScannedPhoto other = photo(2, Kind::Converted);
    other.outcome.importedAs = u"IMG_1.jpg"_s;
    EXPECT_EQ(idsOf(ScanClosing::of({own, other}).otherNames), QList<qint64>{2});
}
