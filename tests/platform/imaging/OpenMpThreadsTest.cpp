#include "OpenMpThreads.h"

#include <gtest/gtest.h>

#include <omp.h>

namespace
{

constexpr int kThreads = 3;

/// Three threads, as the libraries see it.
class OpenMpThreadsTest : public testing::Test
{
public:
    OpenMpThreadsTest() { omp_set_num_threads(kThreads); }

    ~OpenMpThreadsTest() override { omp_set_num_threads(m_before); }

    OpenMpThreadsTest(const OpenMpThreadsTest&) = delete;
    OpenMpThreadsTest& operator=(const OpenMpThreadsTest&) = delete;

private:
    int m_before{omp_get_max_threads()};
};

} // namespace

TEST_F(OpenMpThreadsTest, itIsOneAsLongAsThatIsWanted)
{
    {
        const OpenMpThreads threads(true);
        EXPECT_EQ(omp_get_max_threads(), 1);
    }
    EXPECT_EQ(omp_get_max_threads(), kThreads);
}

TEST_F(OpenMpThreadsTest, itIsAsManyAsBeforeWhereOneIsNotWanted)
{
    const OpenMpThreads threads(false);
    EXPECT_EQ(omp_get_max_threads(), kThreads);
}
