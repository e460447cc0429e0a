#include "ElfImage.h"

#include "LoadedModules.h"

#include <QCoreApplication>
#include <QFile>
#include <QtGlobal>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
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

} // namespace

TEST(ElfImage, functionsAreNamedWithTheirDistance)
{
    for (const char* name : {"qVersion", "getaddrinfo", "_Unwind_Resume"}) {
        const void* const function = dlsym(RTLD_DEFAULT, name);
        ASSERT_NE(function, nullptr) << name;
        const ElfImage image = imageOf(function);
        ASSERT_TRUE(image.isValid()) << name;
        const ElfImage::Symbol at = image.symbolAt(addressOf(function) + 1);
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
    EXPECT_EQ(image.symbolAt(image.bias()).name, "");
    EXPECT_EQ(image.symbolAt(0).name, "");
    EXPECT_EQ(image.symbolAt(UINTPTR_MAX).name, "");
}

TEST(ElfImage, theBuildIdIsThatOfTheFile)
{
    const std::vector<std::uint8_t> file = fileOfQt();
    ASSERT_FALSE(file.empty());
    const auto inFile = imageOf(file).buildId();
    const auto inMemory = imageOf(reinterpret_cast<const void*>(&qVersion)).buildId();
    EXPECT_EQ(inMemory.size(), 20U);
    EXPECT_TRUE(std::ranges::equal(inMemory, inFile));
}

TEST(ElfImage, whatIsNoImageIsNone)
{
    EXPECT_FALSE(ElfImage(0, 0).isValid());
    const std::vector<std::uint8_t> zeros(4096, 0);
    EXPECT_FALSE(imageOf(zeros).isValid());
    EXPECT_TRUE(imageOf(zeros).buildId().empty());
    EXPECT_EQ(imageOf(zeros).symbolAt(addressOf(zeros.data())).name, "");
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
        // What is read beyond is the sanitizer's to see.
        std::vector<std::uint8_t> damaged(
            whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(1 + below(200000)));
        for (std::size_t change = below(40); change > 0; --change) {
            const bool isInHeaders = below(2) == 0;
            damaged[below(std::min<std::size_t>(damaged.size(), isInHeaders ? 1024 : 200000))] =
                static_cast<std::uint8_t>(below(256));
        }
        const ElfImage image = imageOf(damaged);
        const auto id = image.buildId();
        EXPECT_LE(id.size(), damaged.size());
        const auto symbol = image.symbolAt(addressOf(damaged.data()) + below(damaged.size()));
        EXPECT_LE(symbol.name.size(), damaged.size());
    }
}
