#pragma once

#include "ComparedPlaces.h"
#include "SmallPicture.h"

#include <vector>

/// Tells place by place, 64 of them, whether two pictures show the same. Another scene is alike
/// nowhere; damage leaves places that are alike beside places that are not. Any thread.
class PlaceComparison final
{
public:
    /// Compares in the overlay (SceneComparison) in which most places are alike, of equal ones the
    /// first: what another one lays together tells nothing.
    PlaceComparison(const SmallPicture& picture, const SmallPicture& shown);

    /// Whether the picture shows the scene in some places that touch, and in others not.
    [[nodiscard]] bool isDamaged() const;

    /// Whether that is so because the picture has nothing at all there.
    [[nodiscard]] bool hasLostPlaces() const;

    /// Whether a quarter of the picture is without any variation where `shown` has some, as data
    /// that were overwritten are; of white, which sensors clip at, three quarters. Such a picture
    /// is damaged even where `shown` shows another scene.
    [[nodiscard]] bool isEmptyInPlaces() const;

private:
    void judge(std::vector<ComparedPlace> places, const ComparedPlaces& compared);
    void countUnlike(const std::vector<ComparedPlace>& places);
    [[nodiscard]] bool isSameScene() const;

    // Places of the largest patches that touch by a side.
    int m_alike{0};
    int m_unlike{0};
    int m_lost{0}; ///< of the unlike those where the picture has nothing
    int m_constant{0};
    int m_constantBelowWhite{0};
    int m_alikeRows{0};          ///< that follow each other
    bool m_hasUnlikeLine{false}; ///< a row or a column of places
};
