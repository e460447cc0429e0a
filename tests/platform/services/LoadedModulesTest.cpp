#include "LoadedModules.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/auxv.h>

#include <algorithm>
#include <cstdint>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class LoadedModulesTest : public testing::Test
{
protected:
    LoadedModulesTest() { m_modules->read(); }

    const LoadedModule* moduleOf(const void* address) const
    {
        return m_modules->find(reinterpret_cast<std::uintptr_t>(address));
    }

    std::unique_ptr<LoadedModules> m_modules{std::make_unique<LoadedModules>()};
};

int something()
{
    return 7;
}

} // namespace

TEST_F(LoadedModulesTest, theProgramItselfIsFound)
{
    const LoadedModule* const module = moduleOf(reinterpret_cast<const void*>(&something));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(std::string(module->path),
              QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath().toStdString());
    EXPECT_EQ(std::string(module->fileName()),
              QFileInfo(QCoreApplication::applicationFilePath()).fileName().toStdString());
    EXPECT_LE(module->bias, module->start);
    EXPECT_LT(module->start, module->end);
}

TEST_F(LoadedModulesTest, itAgreesWithTheDynamicLinker)
{
    for (const char* name : {"malloc", "qVersion"}) {
        const void* const function = dlsym(RTLD_DEFAULT, name);
        ASSERT_NE(function, nullptr) << name;
        Dl_info told{};
        ASSERT_NE(dladdr(function, &told), 0);
        const LoadedModule* const module = moduleOf(function);
        ASSERT_NE(module, nullptr) << name;
        EXPECT_EQ(module->start, reinterpret_cast<std::uintptr_t>(told.dli_fbase)) << name;
        EXPECT_FALSE(module->buildId.empty()) << name;
    }
}

TEST_F(LoadedModulesTest, theKernelsOwnLibraryIsOneWhereTheKernelGivesIt)
{
    const auto start = getauxval(AT_SYSINFO_EHDR); // 0 where it gives none
    const LoadedModule* const module = m_modules->find(start);
    ASSERT_EQ(module != nullptr, start != 0);
    EXPECT_EQ(std::ranges::count(m_modules->all(), "[vdso]", &LoadedModule::path), start != 0);
    EXPECT_EQ(module == nullptr ? "[vdso]" : module->fileName(), "[vdso]");
}

TEST_F(LoadedModulesTest, dataIsInNoModule)
{
    const auto onHeap = std::make_unique<int>(1);
    EXPECT_EQ(moduleOf(onHeap.get()), nullptr);
    EXPECT_EQ(m_modules->find(0), nullptr);
    EXPECT_EQ(m_modules->find(UINTPTR_MAX), nullptr);
}

TEST_F(LoadedModulesTest, filesThatAreMappedToBeReadAreLeftOut)
{
    // A library, but nothing of it can be executed.
    const LoadedModule* const library = moduleOf(dlsym(RTLD_DEFAULT, "qVersion"));
    ASSERT_NE(library, nullptr);
    QTemporaryFile copy;
    ASSERT_TRUE(copy.open());
    QFile original(QString::fromStdString(std::string(library->path)));
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    ASSERT_GT(copy.write(original.read(1 << 20)), 0);
    ASSERT_TRUE(copy.flush());
    const uchar* const mapped = copy.map(0, copy.size());
    ASSERT_NE(mapped, nullptr);
    m_modules->read();
    EXPECT_EQ(moduleOf(mapped), nullptr);
    for (const LoadedModule& module : m_modules->all()) {
        EXPECT_NE(std::string(module.path), copy.fileName().toStdString());
    }
}

TEST_F(LoadedModulesTest, whatIsLoadedLaterIsFoundWhenReadAgain)
{
    const auto isThere = [this] {
        return std::ranges::any_of(m_modules->all(), [](const LoadedModule& module) {
            return module.fileName().starts_with("libBrokenLocale");
        });
    };
    void* const library = dlopen("libBrokenLocale.so.1", RTLD_NOW);
    ASSERT_NE(library, nullptr) << "the smallest library of glibc's own package";
    EXPECT_FALSE(isThere());
    m_modules->read();
    EXPECT_TRUE(isThere());
    dlclose(library);
    m_modules->read();
    EXPECT_FALSE(isThere());
}

TEST_F(LoadedModulesTest, noTwoModulesOverlap)
{
    EXPECT_FALSE(m_modules->isCut());
    ASSERT_GT(m_modules->all().size(), 3U);
    const LoadedModule* before = nullptr;
    for (const LoadedModule& module : m_modules->all()) {
        EXPECT_LT(module.start, module.end);
        EXPECT_TRUE(before == nullptr || before->end <= module.start);
        before = &module;
    }
}
