#include "PictureMemory.h"

#include <QFile>

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstdint>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::size_t kPicture = 48UL * 1024 * 1024;

/// Sanitizers bring a heap of their own, for which the settings of the C library's do nothing.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsHeapOfTheLibrary = false;
#else
constexpr bool kIsHeapOfTheLibrary = true;
#endif

/// The flags of the mapping that a place lies in, as the kernel tells them (proc(5), smaps).
QByteArray flagsAt(const void* place)
{
    QFile file(u"/proc/self/smaps"_s);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const auto wanted = reinterpret_cast<std::uintptr_t>(place);
    bool isThere = false;
    for (const QByteArray& text : file.readAll().split('\n')) {
        const QByteArray line = text.simplified();
        if (line.startsWith("VmFlags:") && isThere) {
            return line + ' ';
        }
        const QList<QByteArray> ends = line.left(line.indexOf(' ')).split('-');
        if (ends.size() == 2) {
            isThere = ends[0].toULongLong(nullptr, 16) <= wanted &&
                      wanted < ends[1].toULongLong(nullptr, 16);
        }
    }
    return {};
}

} // namespace

TEST(PictureMemoryTest, largeBlocksComeFromTheHeap)
{
    PictureMemory::prepare();
    const std::size_t before = mallinfo2().hblks;
    const std::vector<char> picture(kPicture);
    EXPECT_EQ(mallinfo2().hblks, before);
}

TEST(PictureMemoryTest, theSystemIsAskedForHugePages)
{
    PictureMemory::prepare();
    const std::vector<char> picture(kPicture);
    const QByteArray flags = flagsAt(picture.data() + kPicture / 2);
    ASSERT_FALSE(flags.isEmpty());
    EXPECT_EQ(flags.contains(" hg "),
              kIsHeapOfTheLibrary && QFile::exists(u"/sys/kernel/mm/transparent_hugepage"_s));
}
