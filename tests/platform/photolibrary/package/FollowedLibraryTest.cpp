#include "Catalogues.h"
#include "IntegrityCheck.h"
#include "PackageCopy.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "Sidecars.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kFollowedAt = 800000000.5;

} // namespace

TEST(FollowedLibrary, anUnchangedCatalogueIsWrittenByteForByteAsItWas)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    const QMap<QString, QByteArray> before = library.files();
    const auto written = Catalogues::write(library.connection(), kFollowedAt);
    ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    EXPECT_TRUE(written.value().oldFileRead);
    const QMap<QString, QByteArray> after = library.files();
    EXPECT_EQ(after.value(u"AlbumData.xml"_s).toStdString(),
              before.value(u"AlbumData.xml"_s).toStdString());
    EXPECT_EQ(after.value(u"iLifeShared/AlbumData2.xml"_s).toStdString(),
              before.value(u"iLifeShared/AlbumData2.xml"_s).toStdString());
}

TEST(FollowedLibrary, aLostCatalogueIsDerivedButForWhatOnlyItKnew)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    const QString path = library.package() + u"/AlbumData.xml"_s;
    const QVariantMap before = PropertyList::read(path).value().toMap();
    ASSERT_TRUE(QFile::remove(path));
    const auto written = Catalogues::write(library.connection(), kFollowedAt);
    ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    EXPECT_FALSE(written.value().oldFileRead);
    const QVariantMap after = PropertyList::read(path).value().toMap();
    EXPECT_EQ(after.value(u"Archive Path"_s).toString(), library.package());
    EXPECT_EQ(after.value(u"List of Albums"_s), before.value(u"List of Albums"_s));
    EXPECT_EQ(after.value(u"List of Rolls"_s), before.value(u"List of Rolls"_s));
    EXPECT_EQ(after.value(u"Master Image List"_s).toMap().keys(),
              before.value(u"Master Image List"_s).toMap().keys());
    EXPECT_TRUE(after.value(u"List of Faces"_s).toMap().isEmpty());
}

TEST(FollowedLibrary, onlySidecarsThatLagAreWritten)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    const QMap<QString, QByteArray> before = library.files();
    const auto written = Sidecars::write(library.connection(), library.everything(), kFollowedAt);
    ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
    const QMap<QString, QByteArray> after = library.files();
    EXPECT_EQ(after.keys(), before.keys());
    QStringList changed;
    for (auto file = before.begin(); file != before.end(); ++file) {
        if (after.value(file.key()) != file.value()) {
            changed.append(file.key().section(u'/', -1));
        }
    }
    changed.sort();
    // iPhoto left behind the three of a photo that it had moved to the trash, and how three of its
    // own albums are shown.
    EXPECT_EQ(changed,
              QStringList({u"Master.apmaster"_s,
                           u"Version-0.apversion"_s,
                           u"Version-1.apversion"_s,
                           u"allProjectsAlbum.apalbum"_s,
                           u"eventFilterBarAlbum.apalbum"_s,
                           u"lastImportAlbum.apalbum"_s}));
}

TEST(FollowedLibrary, lostSidecarsAreMadeAsTheApplicationMadeThem)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    ASSERT_TRUE(Sidecars::write(library.connection(), library.everything(), kFollowedAt).ok());
    const QMap<QString, QByteArray> before = library.files();
    int compared = 0;
    for (auto file = before.begin(); file != before.end(); ++file) {
        const QString& name = file.key();
        const bool isSidecar = name.contains(".ap"_L1) || name.endsWith("Keywords.plist"_L1);
        if (!isSidecar || name.contains(".apdetected"_L1) || name.contains(".apfacename"_L1)) {
            continue;
        }
        ASSERT_TRUE(QFile::remove(library.package() + u'/' + name));
        ++compared;
    }
    ASSERT_GT(compared, 80);
    ASSERT_TRUE(Sidecars::write(library.connection(), library.everything(), kFollowedAt).ok());
    const QMap<QString, QByteArray> after = library.files();
    EXPECT_EQ(after.keys(), before.keys());
    for (auto file = before.begin(); file != before.end(); ++file) {
        QVariantMap old = PropertyList::parse(file.value()).value().toMap();
        QVariantMap made = PropertyList::parse(after.value(file.key())).value().toMap();
        EXPECT_EQ(made.keys(), old.keys()) << file.key().toStdString();
        EXPECT_EQ(made.value(u"imageProxyState"_s), old.value(u"imageProxyState"_s));
        EXPECT_EQ(made.value(u"InfoDictionary"_s), old.value(u"InfoDictionary"_s));
        EXPECT_EQ(made.value(u"exifProperties"_s).toMap().keys(),
                  old.value(u"exifProperties"_s).toMap().keys())
            << file.key().toStdString();
        EXPECT_EQ(made.value(u"versionUuids"_s).toList().size(),
                  old.value(u"versionUuids"_s).toList().size());
    }
}

TEST(FollowedLibrary, theIntegrityCheckFindsNothing)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    QStringList problems = IntegrityCheck::problems(library.connection(), {});
    // The pictures themselves are not copied here.
    problems.removeIf([](const QString& problem) { return problem.contains("preview"_L1); });
    EXPECT_EQ(problems, QStringList());
}
