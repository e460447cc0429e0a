#include "Bundle.h"

#include "PropertyList.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(Bundle, namesAndResourcesComeFromItsFolder)
{
    const QTemporaryDir folder;
    QFile info(folder.filePath(u"Info.plist"_s));
    ASSERT_TRUE(info.open(QIODevice::WriteOnly));
    info.write(PropertyList::toXml(QVariantMap{{u"CFBundleName"_s, u"Corvane"_s},
                                               {u"CFBundleShortVersionString"_s, u"1.2"_s}})
                   .value());
    info.close();
    const Bundle bundle(folder.path());
    EXPECT_EQ(bundle.name(), u"Corvane"_s);
    EXPECT_EQ(bundle.version(), u"1.2"_s);
    EXPECT_EQ(bundle.infoDictionary().size(), 2);
    EXPECT_EQ(bundle.pathForResource(u"Info"_s, u"plist"_s), folder.filePath(u"Info.plist"_s));
    EXPECT_TRUE(bundle.pathForResource(u"Other"_s, u"plist"_s).isNull());
}

TEST(Bundle, withoutInformationEverythingIsEmpty)
{
    const QTemporaryDir folder;
    const Bundle bundle(folder.path());
    EXPECT_TRUE(bundle.infoDictionary().isEmpty());
    EXPECT_TRUE(bundle.name().isEmpty());
    EXPECT_TRUE(bundle.version().isEmpty());
}

} // namespace
