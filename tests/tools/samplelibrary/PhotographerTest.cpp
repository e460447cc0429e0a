#include "Photographer.h"

#include <gtest/gtest.h>

namespace
{

QList<PlannedPhoto> fivePhotos()
{
    return SamplePlan::photos({.photos = 2, .megapixels = 0.05});
}

} // namespace

TEST(PhotographerTest, photosComeInTheirOrderOnHoweverManyThreads)
{
    const QList<PlannedPhoto> planned = fivePhotos();
    for (const int threads : {1, 2, 9}) {
        Photographer photographer(planned, threads);
        for (const PlannedPhoto& photo : planned) {
            const auto taken = photographer.next();
            ASSERT_TRUE(taken.ok());
            const QByteArray wanted = photo.raw ? PhotoRenderer::takeRaw(photo.shot).value().dng
                                                : PhotoRenderer::takeJpeg(photo.shot).value();
            EXPECT_EQ(taken.value().dng, wanted) << photo.fileName.toStdString();
            EXPECT_EQ(taken.value().preview.isEmpty(), !photo.raw);
        }
    }
}

TEST(PhotographerTest, whoeverNeedsNoMoreMayLeave)
{
    const QList<PlannedPhoto> planned = fivePhotos();
    Photographer photographer(planned, 2);
    EXPECT_TRUE(photographer.next().ok());
}
