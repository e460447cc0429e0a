#pragma once

#include "SmallPicture.h"

#include <QPoint>
#include <QRect>

#include <vector>

/// What two pictures, the one to be judged and one that is shown beside it, have at a place.
struct ComparedPlace {
    float pictureDetail{0.0F}; ///< lightness less its mean around, root of the mean square
    float shownDetail{0.0F};
    float sureDetail{0.0F}; ///< the least of shownDetail where the place may lie in truth
    float shownMean{0.0F};  ///< of the lightness
    float darkest{1.0F};    ///< of the picture's lightness
    float lightest{0.0F};
    float likeness{-1.0F}; ///< correlation of the details, near the place
    bool isFar{false};     ///< lies farther away than it was looked for
};

/// Measures pictures that were laid over each other, place by place. The pictures must outlive it.
/// Any thread.
class ComparedPlaces final
{
public:
    /// Places a side, and the values of each, a side.
    static constexpr int kPlaces = 8;
    static constexpr int kPlaceSide = 12;
    static constexpr int kSide = kPlaces * kPlaceSide;

    /// Detail below which a place has no shape to go by.
    static constexpr float kDetail = 0.008F;

    /// The likeness from which on no better one is looked for.
    static constexpr float kAlike = 0.85F;

    /// Both have kSide by kSide values.
    ComparedPlaces(const SmallPicture& picture, const SmallPicture& shown);

    /// Row by row.
    [[nodiscard]] std::vector<ComparedPlace> places() const;

    /// The way to where a place is most alike.
    [[nodiscard]] QPoint bestStep(QPoint place) const;

    /// How many rows that follow each other are alike at the picture's upper or lower edge: what is
    /// left where all but the begin or the end of a file is destroyed.
    [[nodiscard]] int alikeRows() const;

private:
    /// Lightness less its mean: what has a shape.
    struct Detail {
        std::vector<float> around; ///< less the mean of what surrounds a value
        std::vector<float> along;  ///< less that in its row: nothing of the rows around it
    };

    [[nodiscard]] static Detail detailOf(const SmallPicture& lightness);
    [[nodiscard]] bool isAlikeRow(int row) const;
    [[nodiscard]] ComparedPlace at(int column, int row) const;
    [[nodiscard]] float sureDetail(const QRect& area) const;
    [[nodiscard]] float likeness(const QRect& area) const;
    [[nodiscard]] float likeness(const QRect& area, const QPoint& step) const;

    const SmallPicture& m_picture;
    const SmallPicture& m_shown;
    Detail m_pictureDetail;
    Detail m_shownDetail;
};
