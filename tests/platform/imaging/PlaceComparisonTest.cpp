#include "PlaceComparison.h"

#include "BitmapImage.h"
#include "SceneSamples.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

/// What a comparison tells.
struct Verdict {
    bool damaged{false};
    bool lost{false};
    bool empty{false};

    bool operator==(const Verdict&) const = default;
};

Verdict verdictOn(const SmallPicture& picture, const SmallPicture& shown)
{
    const PlaceComparison comparison(picture, shown);
    return {.damaged = comparison.isDamaged(),
            .lost = comparison.hasLostPlaces(),
            .empty = comparison.isEmptyInPlaces()};
}

/// A square, so that four turns lay another over it and nothing else does.
constexpr QSize kSquare(960, 960);

Bitmap leavesInSquare()
{
    return SceneSamples::leaves(kSquare);
}

/// Another scene in that part of it.
Bitmap leavesWithOtherIn(const QRect& area)
{
    Bitmap picture = leavesInSquare();
    const Bitmap other = SceneSamples::leaves(kSquare, 2);
    const auto first = 3 * static_cast<std::size_t>(area.left());
    const auto count = 3 * static_cast<std::size_t>(area.width());
    for (int y = area.top(); y <= area.bottom(); ++y) {
        std::ranges::copy(other.row(y).subspan(first, count),
                          picture.row(y).subspan(first, count).begin());
    }
    return picture;
}

/// Nothing in that part of it.
Bitmap leavesWithHoleIn(const QRect& area)
{
    Bitmap picture = leavesInSquare();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        std::ranges::fill(picture.row(y).subspan(3 * static_cast<std::size_t>(area.left()),
                                                 3 * static_cast<std::size_t>(area.width())),
                          quint16{0});
    }
    return picture;
}

struct Case {
    const char* name{""};
    Bitmap picture;
    Verdict expected{};
};

} // namespace

TEST(PlaceComparisonTest, whatItTellsWhereItEndsEarlyIsWhatAllOverlaysTell)
{
    const QRect all({0, 0}, kSquare);
    const QRect place(240, 360, 360, 360);
    const Case cases[]{
        {.name = "the same", .picture = leavesInSquare()},
        {.name = "another in a place",
         .picture = leavesWithOtherIn(place),
         .expected = {.damaged = true}},
        {.name = "nothing in a place",
         .picture = leavesWithHoleIn(place),
         .expected = {.damaged = true, .lost = true}},
        {.name = "another everywhere", .picture = leavesWithOtherIn(all)},
        {.name = "nothing everywhere",
         .picture = leavesWithHoleIn(all),
         .expected = {.empty = true}},
    };
    const SmallPicture shown = SmallPicture::of(leavesInSquare());
    for (const Case& one : cases) {
        const SmallPicture picture = SmallPicture::of(one.picture);
        // As they lie, the first overlay is the one that may settle it; turned, the last of all.
        EXPECT_EQ(verdictOn(picture, shown), one.expected) << one.name;
        EXPECT_EQ(verdictOn(picture, shown.turned()), one.expected) << one.name;
    }
}

TEST(PlaceComparisonTest, damageOfPlacesThatLieFarOffIsFoundInTheOverlayWhereTheyLieNear)
{
    const QRect band(0, 80, 1200, 100);
    const Bitmap good = SceneSamples::leaves({1200, 800});
    Bitmap damaged = good;
    for (int y = band.top(); y <= band.bottom(); ++y) {
        std::ranges::fill(damaged.row(y), quint16{20000});
    }
    // Stretched over the whole it lies right in the middle only.
    const QImage wide = BitmapImage::toImage(good).copy(0, 62, 1200, 676);
    const SmallPicture shown = SmallPicture::of(wide);
    EXPECT_TRUE(PlaceComparison(SmallPicture::of(damaged), shown).isDamaged());
    EXPECT_FALSE(PlaceComparison(SmallPicture::of(good), shown).isDamaged());
}
