#include "ElfImage.h"

#include "LoadedModules.h"

#include <QCoreApplication>
#include <QFile>
#include <QtGlobal>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

std::uintptr_t addressOf(const void* place)
{
    return reinterpret_cast<std::uintptr_t>(place);
}

/// The image that a function of a library lies in.
ElfImage imageOf(const void* function)
{
    const auto modules = std::make_unique<LoadedModules>();
    modules->read();
    const LoadedModule* const module = modules->find(addressOf(function));
    return module == nullptr ? ElfImage(0, 0) : ElfImage(module->start, module->end);
}

ElfImage imageOf(const std::vector<std::uint8_t>& bytes)
{
    return {addressOf(bytes.data()), addressOf(bytes.data()) + bytes.size()};
}

/// The file of Qt's library, which is as it would be in memory up to its tables of symbols.
std::vector<std::uint8_t> fileOfQt()
{
    Dl_info told{};
    dladdr(reinterpret_cast<const void*>(&qVersion), &told);
    QFile file(QFile::decodeName(told.dli_fname));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray bytes = file.readAll();
    return {bytes.cbegin(), bytes.cend()};
}

std::vector<std::uint8_t> buildIdOf(const ElfImage& image)
{
    std::vector<std::uint8_t> id(64);
    id.resize(image.copyBuildId(id));
    return id;
}

std::string nameAt(const ElfImage& image, std::uintptr_t address)
{
    std::array<char, 4096> buffer{};
    return std::string(image.symbolAt(address, buffer).name);
}

/// Whether the file has these bytes somewhere; true for none.
template <typename Bytes>
bool hasBytes(const std::vector<std::uint8_t>& file, const Bytes& bytes)
{
    return bytes.empty() ||
           std::search(file.begin(), file.end(), bytes.begin(), bytes.end()) != file.end();
}

} // namespace

TEST(ElfImage, functionsAreNamedWithTheirDistance)
{
    for (const char* name : {"qVersion", "getaddrinfo", "_Unwind_Resume"}) {
        const void* const function = dlsym(RTLD_DEFAULT, name);
        ASSERT_NE(function, nullptr) << name;
        const ElfImage image = imageOf(function);
        ASSERT_TRUE(image.isValid()) << name;
        std::array<char, 4096> buffer{};
        const ElfImage::Symbol at = image.symbolAt(addressOf(function) + 1, buffer);
        Dl_info told{};
        ASSERT_NE(dladdr(static_cast<const std::byte*>(function) + 1, &told), 0);
        // Several names may lie at one address.
        const std::string begin(at.name);
        EXPECT_EQ(addressOf(dlsym(RTLD_DEFAULT, begin.c_str())), addressOf(told.dli_saddr))
            << name << ' ' << begin;
        EXPECT_EQ(at.distance, 1U) << name;
    }
}

TEST(ElfImage, whatIsNoFunctionHasNoName)
{
    const ElfImage image = imageOf(dlsym(RTLD_DEFAULT, "qVersion"));
    EXPECT_EQ(nameAt(image, image.bias()), "");
    EXPECT_EQ(nameAt(image, 0), "");
    EXPECT_EQ(nameAt(image, UINTPTR_MAX), "");
}

TEST(ElfImage, theBuildIdIsThatOfTheFile)
{
    const std::vector<std::uint8_t> file = fileOfQt();
    ASSERT_FALSE(file.empty());
    const ElfImage inMemory = imageOf(reinterpret_cast<const void*>(&qVersion));
    EXPECT_EQ(buildIdOf(inMemory).size(), 20U);
    EXPECT_EQ(buildIdOf(inMemory), buildIdOf(imageOf(file)));
    std::array<std::uint8_t, 19> small{};
    EXPECT_EQ(inMemory.copyBuildId(small), 0U);
}

TEST(ElfImage, aNameIsCutWhereThereIsNoMoreRoom)
{
    const ElfImage image = imageOf(reinterpret_cast<const void*>(&qVersion));
    const std::uintptr_t address = addressOf(dlsym(RTLD_DEFAULT, "qVersion"));
    std::array<char, 3> buffer{};
    EXPECT_EQ(image.symbolAt(address, buffer).name, nameAt(image, address).substr(0, 3));
}

TEST(ElfImage, whatCannotBeReadIsAsIfItWereNotThere)
{
    const std::vector<std::uint8_t> whole = fileOfQt();
    ASSERT_GT(whole.size(), 200000U);
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t size = (whole.size() + pageSize - 1) / pageSize * pageSize;
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    std::ranges::copy(whole, static_cast<std::uint8_t*>(memory));
    const std::uintptr_t start = addressOf(memory);
    const std::uintptr_t function = addressOf(dlsym(RTLD_DEFAULT, "qVersion")) -
                                    imageOf(reinterpret_cast<const void*>(&qVersion)).bias() +
                                    start;
    ASSERT_NE(nameAt(ElfImage(start, start + size), function), "");
    // From the end to the begin, page after page.
    std::size_t named = 0;
    for (std::size_t left = size; left > 0; left -= pageSize) {
        ASSERT_EQ(mprotect(static_cast<std::byte*>(memory) + left - pageSize, pageSize, PROT_NONE),
                  0);
        const ElfImage image(start, start + size);
        EXPECT_EQ(image.isReadable(), left > pageSize);
        named += nameAt(image, function).empty() ? 0 : 1;
    }
    EXPECT_GT(named, 0U);
    EXPECT_LT(named, size / pageSize);
    EXPECT_FALSE(ElfImage(start, start + size).isValid());
    EXPECT_TRUE(buildIdOf(ElfImage(start, start + size)).empty());
    munmap(memory, size);
}

TEST(ElfImage, whatIsNoImageIsNone)
{
    EXPECT_FALSE(ElfImage(0, 0).isValid());
    const std::vector<std::uint8_t> zeros(4096, 0);
    EXPECT_FALSE(imageOf(zeros).isValid());
    EXPECT_TRUE(imageOf(zeros).isReadable());
    EXPECT_TRUE(buildIdOf(imageOf(zeros)).empty());
    EXPECT_EQ(nameAt(imageOf(zeros), addressOf(zeros.data())), "");
    std::vector<std::uint8_t> file = fileOfQt();
    file.resize(32);
    EXPECT_FALSE(imageOf(file).isValid());
}

TEST(ElfImage, damagedHeadersLeadNowhere)
{
    const std::vector<std::uint8_t> whole = fileOfQt();
    ASSERT_GT(whole.size(), 200000U);
    std::mt19937 random(20260131);
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (int run = 0; run < 300; ++run) {
        std::vector<std::uint8_t> damaged(
            whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(1 + below(200000)));
        for (std::size_t change = below(40); change > 0; --change) {
            const bool isInHeaders = below(2) == 0;
            damaged[below(std::min<std::size_t>(damaged.size(), isInHeaders ? 1024 : 200000))] =
                static_cast<std::uint8_t>(below(256));
        }
        const ElfImage image = imageOf(damaged);
        // Nothing is taken from beyond.
        EXPECT_TRUE(hasBytes(damaged, buildIdOf(image)));
        const std::string name = nameAt(image, addressOf(damaged.data()) + below(damaged.size()));
        EXPECT_TRUE(hasBytes(damaged, name));
    }
}
