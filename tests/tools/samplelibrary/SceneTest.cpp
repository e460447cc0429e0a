#include "Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string>

namespace
{

constexpr int kRows = 400;

struct NamedScene {
    const char* name;
    SceneMaker make;
    float aspect{1.5F};
};

void PrintTo(const NamedScene& scene, std::ostream* stream)
{
    *stream << scene.name;
}

float brightness(Colour light)
{
    return 0.2126F * light.red + 0.7152F * light.green + 0.0722F * light.blue;
}

/// Calls `see` with the light of each point of a coarse picture.
void look(const NamedScene& named,
          quint32 seed,
          const std::function<void(int x, int y, Colour)>& see)
{
    const float pixel = 1.0F / kRows;
    const auto scene = named.make({.aspect = named.aspect, .pixel = pixel, .seed = seed});
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; static_cast<float>(x) < named.aspect * kRows; ++x) {
            see(x,
                y,
                scene->at((static_cast<float>(x) + 0.5F) * pixel,
                          (static_cast<float>(y) + 0.5F) * pixel));
        }
    }
}

class SceneTest : public testing::TestWithParam<NamedScene>
{
};

} // namespace

TEST_P(SceneTest, lightIsFiniteAndNeverNegative)
{
    look(GetParam(), 1, [](int x, int y, Colour light) {
        for (const float channel : {light.red, light.green, light.blue}) {
            ASSERT_TRUE(std::isfinite(channel)) << x << ", " << y;
            ASSERT_GE(channel, 0.0F) << x << ", " << y;
        }
    });
}

TEST_P(SceneTest, reachesFromShadowToLightThatNoPixelHolds)
{
    float darkest = 1.0F;
    float brightest = 0.0F;
    look(GetParam(), 1, [&](int, int, Colour light) {
        darkest = std::min(darkest, brightness(light));
        brightest = std::max(brightest, light.green);
    });
    EXPECT_LT(darkest, 0.1F);
    // Decoders stretch a picture that leaves the top of the range unused.
    EXPECT_GT(brightest, 1.0F);
}

TEST_P(SceneTest, isMostlyWithinWhatThePictureHolds)
{
    int beyond = 0;
    int all = 0;
    look(GetParam(), 1, [&](int, int, Colour light) {
        beyond += brightness(light) > 1.0F ? 1 : 0;
        ++all;
    });
    EXPECT_LT(beyond * 20, all);
}

TEST_P(SceneTest, theSameSeedShowsTheSameAndAnotherSeedSomethingElse)
{
    double differenceSame = 0.0;
    double differenceOther = 0.0;
    const NamedScene& named = GetParam();
    const Framing framing{.aspect = named.aspect, .pixel = 1.0F / kRows, .seed = 0};
    const auto scene = named.make(framing);
    const auto same = named.make(framing);
    const auto other = named.make({.aspect = framing.aspect, .pixel = framing.pixel, .seed = 1});
    for (int row = 0; row < 50; ++row) {
        for (int column = 0; column < static_cast<int>(named.aspect * 50.0F); ++column) {
            const float x = 0.01F + 0.02F * static_cast<float>(column);
            const float y = 0.01F + 0.02F * static_cast<float>(row);
            differenceSame += std::abs(brightness(scene->at(x, y)) - brightness(same->at(x, y)));
            differenceOther += std::abs(brightness(scene->at(x, y)) - brightness(other->at(x, y)));
        }
    }
    EXPECT_EQ(differenceSame, 0.0);
    EXPECT_GT(differenceOther, 0.5);
}

INSTANTIATE_TEST_SUITE_P(Scenes,
                         SceneTest,
                         testing::Values(NamedScene{"hills", Scenes::hills},
                                         NamedScene{"lake", Scenes::lake},
                                         NamedScene{"brickWall", Scenes::brickWall},
                                         NamedScene{"nightStreet", Scenes::nightStreet},
                                         NamedScene{"stillLife", Scenes::stillLife},
                                         NamedScene{"portrait", Scenes::portrait, 1.0F / 1.5F},
                                         NamedScene{"flowers", Scenes::flowers},
                                         NamedScene{"chart", Scenes::chart}),
                         [](const auto& scene) { return std::string(scene.param.name); });

TEST(ChartTest, patchesLieApartAndShowTheirColours)
{
    const auto chart = Scenes::chart({.aspect = 1.5F, .pixel = 0.001F, .seed = 3});
    for (int i = 0; i < Scenes::kChartPatches; ++i) {
        const Scenes::ChartPatch patch = Scenes::chartPatch(i);
        const float near = patch.side * 0.45F;
        const std::array<std::array<float, 2>, 3> places{
            {{0.0F, 0.0F}, {near, near}, {-near, -near}}};
        for (const auto& place : places) {
            const Colour seen = chart->at(patch.x + place[0], patch.y + place[1]);
            EXPECT_NEAR(seen.red, patch.colour.red, 0.02F * patch.colour.red) << "patch " << i;
            EXPECT_NEAR(seen.green, patch.colour.green, 0.02F * patch.colour.green)
                << "patch " << i;
            EXPECT_NEAR(seen.blue, patch.colour.blue, 0.02F * patch.colour.blue) << "patch " << i;
        }
    }
}
