#pragma once

#include "Colour.h"

#include <QSize>

#include <memory>

/// How the camera was held; the values are those of the Exif tag Orientation.
enum class Orientation : quint16 {
    Upright = 1,
    TurnClockwise = 6,     ///< the stored picture is to be turned clockwise by 90 degrees
    TurnAnticlockwise = 8, ///< … anticlockwise
};

/// What a scene must know to be drawn to a certain picture.
struct Framing {
    float aspect{1.5F};  ///< width by height of the upright picture
    float pixel{0.001F}; ///< side of a pixel, in picture heights
    quint32 seed{0};     ///< another seed, another picture of the same kind
};

/// Something to photograph. Immutable: any thread.
class Scene
{
public:
    Scene() = default;
    virtual ~Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// The light from a point of the upright picture, in picture heights: x from 0 at the left
    /// edge to the aspect, y from 0 at the top to 1.
    [[nodiscard]] virtual Colour at(float x, float y) const = 0;
};

using SceneMaker = std::unique_ptr<const Scene> (*)(const Framing&);

/// The scenes there are.
namespace Scenes
{

[[nodiscard]] std::unique_ptr<const Scene> hills(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> lake(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> brickWall(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> nightStreet(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> stillLife(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> portrait(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> flowers(const Framing& framing);
[[nodiscard]] std::unique_ptr<const Scene> chart(const Framing& framing);

inline constexpr int kChartPatches = 24;

/// A patch of the test chart: where its middle lies, and the light from it.
struct ChartPatch {
    float x{0.0F};
    float y{0.0F};
    float side{0.0F};
    Colour colour;
};

/// Patch 0 to kChartPatches - 1, row by row.
[[nodiscard]] ChartPatch chartPatch(int index);

} // namespace Scenes
