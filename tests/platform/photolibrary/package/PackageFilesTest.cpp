#include "PackageFiles.h"

#include "AtomicFile.h"
#include "FlushRecorder.h"
#include "OrdinaryUser.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

void writeFile(const QString& path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("four"), 4);
}

} // namespace

/// A package with a file in it, and files beside it that a path leading out would meet.
class PackageFilesOnDisk : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        ASSERT_TRUE(QDir().mkpath(package() + u"/Masters/2010"_s));
        writeFile(package() + u"/Masters/2010/a.jpg"_s);
        writeFile(package() + u"/b"_s);
        writeFile(outside());
    }

    [[nodiscard]] QString folder() const { return m_folder.path(); }

    [[nodiscard]] QString package() const { return m_folder.path() + u"/P.photolibrary"_s; }

    [[nodiscard]] QString outside() const { return m_folder.path() + u"/x"_s; }

    /// Paths that lead out of the package, or may.
    [[nodiscard]] QStringList refused() const
    {
        return {QString(),
                u""_s,
                u"/x"_s,
                outside(),
                u"../x"_s,
                u".."_s,
                u"a/../b"_s,
                u"Masters/.."_s,
                u"Masters/../b"_s,
                u"a/../../x"_s,
                u"b"_s + QChar(u'\0')};
    }

    void expectAllThere() const
    {
        EXPECT_TRUE(QFile::exists(package() + u"/Masters/2010/a.jpg"_s));
        EXPECT_TRUE(QFile::exists(package() + u"/b"_s));
        EXPECT_TRUE(QFile::exists(outside()));
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(PackageFilesOnDisk, pathsThatLeadOutAreNotInside)
{
    for (const QString& path : refused()) {
        EXPECT_FALSE(PackageFiles::isInside(path)) << path.toStdString();
    }
    for (const QString& path : {u"b"_s, u"Masters/2010/a.jpg"_s, u"a..b"_s, u"..."_s, u"a/..b"_s}) {
        EXPECT_TRUE(PackageFiles::isInside(path)) << path.toStdString();
    }
}

TEST_F(PackageFilesOnDisk, removingAPathThatLeadsOutTouchesNothing)
{
    for (const QString& path : refused()) {
        EXPECT_EQ(PackageFiles::remove(package(), path).size(), 1) << path.toStdString();
        EXPECT_EQ(PackageFiles::removeMade(package(), {path}).size(), 1) << path.toStdString();
        PackageFiles::removeEmpty(package(), {path});
        expectAllThere();
    }
}

TEST_F(PackageFilesOnDisk, aRemovedFolderTakesItsFilesAndNotWhatItsLinksPointTo)
{
    ASSERT_TRUE(QFile::link(outside(), package() + u"/Masters/2010/link"_s));
    ASSERT_TRUE(QFile::link(package() + u"/Masters"_s, package() + u"/Masters/2010/folder"_s));
    EXPECT_TRUE(PackageFiles::remove(package(), u"Masters/2010"_s).isEmpty());
    EXPECT_FALSE(QFile::exists(package() + u"/Masters/2010"_s));
    EXPECT_TRUE(QFile::exists(package() + u"/Masters"_s));
    EXPECT_TRUE(QFile::exists(outside()));
    EXPECT_TRUE(PackageFiles::remove(package(), u"Masters/2010"_s).isEmpty())
        << "what is gone is gone";
    EXPECT_TRUE(PackageFiles::remove(package(), u"b/below"_s).isEmpty()) << "nor was this there";
}

TEST_F(PackageFilesOnDisk, whereTheLastFolderWasNeverMadeThoseThatWereStillGo)
{
    ASSERT_TRUE(QDir().mkpath(package() + u"/Previews/2011/05/06"_s));
    EXPECT_TRUE(
        PackageFiles::removeMade(package(), {u"Previews/2011/05/06/never/c.jpg"_s}).isEmpty());
    EXPECT_FALSE(QFile::exists(package() + u"/Previews/2011"_s));
    expectAllThere();
}

TEST_F(PackageFilesOnDisk, filesThatWereMadeGoWithTheFoldersTheyLeaveEmpty)
{
    ASSERT_TRUE(QDir().mkpath(package() + u"/Masters/2011/05"_s));
    writeFile(package() + u"/Masters/2011/05/c.jpg"_s);
    EXPECT_TRUE(PackageFiles::removeMade(package(), {u"Masters/2011/05/c.jpg"_s}).isEmpty());
    EXPECT_FALSE(QFile::exists(package() + u"/Masters/2011"_s));
    expectAllThere();
}

TEST_F(PackageFilesOnDisk, withoutAPackageNothingIsRemoved)
{
    for (const QString& nowhere : {QString(), u"."_s, u"Masters"_s}) {
        EXPECT_EQ(PackageFiles::remove(nowhere, u"b"_s).size(), 1);
        EXPECT_EQ(PackageFiles::removeMade(nowhere, {u"b"_s}).size(), 1);
    }
    expectAllThere();
}

TEST_F(PackageFilesOnDisk, whatCannotBeRemovedIsNamedWithTheReasonAndTheRestGoes)
{
    ASSERT_TRUE(QDir().mkpath(package() + u"/Masters/2010/closed"_s));
    writeFile(package() + u"/Masters/2010/closed/e.jpg"_s);
    const OrdinaryUser user({folder()});
    const WithPermissions closed(package() + u"/Masters/2010/closed"_s, 0555);
    const auto left = PackageFiles::remove(package(), u"Masters/2010"_s);
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(left.first().path, u"Masters/2010/closed/e.jpg"_s);
    EXPECT_EQ(left.first().reason, u"Permission denied"_s);
    EXPECT_FALSE(QFile::exists(package() + u"/Masters/2010/a.jpg"_s));
}

TEST_F(PackageFilesOnDisk, whatCannotBeLookedForIsNotTakenForGone)
{
    const OrdinaryUser user({folder()});
    const WithPermissions closed(package() + u"/Masters/2010"_s, 0);
    EXPECT_EQ(PackageFiles::remove(package(), u"Masters/2010/a.jpg"_s).size(), 1);
    EXPECT_EQ(PackageFiles::remove(package(), u"Masters/2010"_s).size(), 1);
}

TEST_F(PackageFilesOnDisk, ofManyFilesThatStayTheFirstAreListedAndTheRestCounted)
{
    QList<PackageFiles::NotRemoved> left;
    for (int i = 0; i < 25; ++i) {
        left.append({u"Masters/%1"_s.arg(i), u"Permission denied"_s});
    }
    const QStringList lines = PackageFiles::listed(left).split(u'\n');
    ASSERT_EQ(lines.size(), 21);
    EXPECT_EQ(lines.first(), u"  Masters/0: Permission denied"_s);
    EXPECT_EQ(lines.last(), u"  and 5 more"_s);
    EXPECT_EQ(PackageFiles::listed(left.first(1)), u"  Masters/0: Permission denied"_s);
}

TEST_F(PackageFilesOnDisk, bytesOfAFolderAreThoseOfItsFilesWithoutLinks)
{
    writeFile(package() + u"/Masters/2010/d.jpg"_s);
    ASSERT_TRUE(QFile::link(outside(), package() + u"/Masters/2010/link"_s));
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"Masters"_s), 8);
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"b"_s), 4);
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"absent"_s), 0);
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"../x"_s), 0);
}

TEST_F(PackageFilesOnDisk, behindALinkThatLeadsOutOnlyWhatThisProgramMadeIsRemoved)
{
    ASSERT_TRUE(QDir(folder()).mkpath(u"P.photolibrary beside/2011"_s));
    const QString beside = package() + u" beside/2011"_s;
    writeFile(beside + u"/kept.jpg"_s);
    writeFile(beside + u"/made.jpg"_s);
    ASSERT_TRUE(QFile::link(beside, package() + u"/Masters/2011"_s));
    EXPECT_TRUE(PackageFiles::leadsOut(package(), u"Masters/2011/kept.jpg"_s));
    EXPECT_FALSE(PackageFiles::leadsOut(package(), u"Masters/2010/a.jpg"_s));
    EXPECT_FALSE(PackageFiles::leadsOut(package(), u"Masters/2012/not there.jpg"_s));
    EXPECT_FALSE(PackageFiles::leadsOut(package(), u"Masters/2011"_s)) << "the link itself";
    EXPECT_EQ(PackageFiles::remove(package(), u"Masters/2011/kept.jpg"_s).size(), 1);
    EXPECT_TRUE(QFile::exists(beside + u"/kept.jpg"_s));
    EXPECT_TRUE(PackageFiles::removeMade(package(), {u"Masters/2011/made.jpg"_s}).isEmpty());
    EXPECT_FALSE(QFile::exists(beside + u"/made.jpg"_s));
}

TEST_F(PackageFilesOnDisk, aFileMayBeWrittenUnlessALinkLeadsFromThereOutOfThePackage)
{
    ASSERT_TRUE(QDir(folder()).mkpath(u"P.photolibrary beside"_s));
    const QString beside = package() + u" beside"_s;
    const auto mayBeWritten = [this](const QString& path) {
        return PackageFiles::mayBeWritten(package(), path).ok();
    };
    for (const QString& path : {u"b"_s, u"new"_s, u"Masters/2010/a.jpg"_s, u"not/there/yet"_s}) {
        EXPECT_TRUE(mayBeWritten(path)) << path.toStdString();
    }
    for (const QString& path : refused()) {
        EXPECT_FALSE(mayBeWritten(path)) << path.toStdString();
    }
    ASSERT_TRUE(QFile::link(package() + u"/b"_s, package() + u"/within"_s));
    EXPECT_TRUE(mayBeWritten(u"within"_s));
    ASSERT_TRUE(QFile::link(outside(), package() + u"/out"_s));
    EXPECT_FALSE(mayBeWritten(u"out"_s));
    ASSERT_TRUE(QFile::link(outside() + u" not there"_s, package() + u"/to nothing"_s));
    EXPECT_FALSE(mayBeWritten(u"to nothing"_s));
    ASSERT_TRUE(QFile::link(beside, package() + u"/Masters/whole"_s));
    EXPECT_TRUE(mayBeWritten(u"Masters/whole/c.jpg"_s));
    ASSERT_TRUE(QFile::link(beside, package() + u"/Masters/2010/one"_s));
    EXPECT_FALSE(mayBeWritten(u"Masters/2010/one/c.jpg"_s));
    ASSERT_TRUE(QFile::link(outside(), beside + u"/out"_s));
    EXPECT_FALSE(mayBeWritten(u"Masters/whole/out"_s));
}

TEST_F(PackageFilesOnDisk, aFileThatHasAnotherNameTooFreesNothing)
{
    const QByteArray file = QFile::encodeName(package() + u"/Masters/2010/a.jpg"_s);
    ASSERT_EQ(::link(file.constData(), QFile::encodeName(folder() + u"/second"_s).constData()), 0);
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"Masters"_s), 0);
    EXPECT_EQ(PackageFiles::bytesOf(package(), u"Masters/2010/a.jpg"_s), 0);
}

TEST_F(PackageFilesOnDisk, ofUnfinishedFilesOnlyThoseOfThatKindAreRemoved)
{
    const QString folder = u"Database/Albums"_s;
    ASSERT_TRUE(QDir().mkpath(package() + u'/' + folder));
    const QStringList names{
        u".a.apalbum.0abc123.corvane-new"_s, u".picture.jpg.0abc123.corvane-new"_s, u"b.apalbum"_s};
    for (const QString& name : names) {
        ASSERT_TRUE(QFile::copy(package() + u"/Masters/2010/a.jpg"_s,
                                package() + u'/' + folder + u'/' + name));
    }
    PackageFiles::removeAllUnfinished(package(), folder, u".apalbum"_s);
    const QStringList left =
        QDir(package() + u'/' + folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    EXPECT_EQ(left, names.sliced(1));
}

TEST_F(PackageFilesOnDisk, anUnfinishedFileIsRemovedHoweverLongTheNameThatItIsToBear)
{
    const QString folder = u"Masters/2010"_s;
    const QString place = QFileInfo(package() + u'/' + folder).canonicalFilePath();
    const QString characters = QString(120, u'\u00e9'); // of two bytes each
    for (const QString& name :
         {QString(240, u'a') + u".JPG"_s, characters + u".JPG"_s, u'a' + characters + u".JPG"_s}) {
        const FlushRecorder recorder;
        ASSERT_TRUE(AtomicFile::write(place + u'/' + name, "four").ok());
        const QStringList flushed = recorder.flushed().values().filter(u".corvane-new"_s);
        ASSERT_EQ(flushed.size(), 1);
        writeFile(flushed.first());
        PackageFiles::removeUnfinished(package(), folder, name);
        EXPECT_FALSE(QFileInfo::exists(flushed.first())) << flushed.first().toStdString();
        EXPECT_TRUE(QFileInfo::exists(place + u'/' + name));
    }
}

TEST(UnfinishedFile, isOfTheFileWhoseNameItIsToBear)
{
    EXPECT_EQ(PackageFiles::finishedPath(u"Masters/2010/.IMG_1.v2.JPG.a1B2c3.corvane-new"_s),
              u"Masters/2010/IMG_1.v2.JPG"_s);
    EXPECT_EQ(PackageFiles::finishedPath(u"Masters/.corvane-new"_s), u"Masters/"_s);
    for (const QString& other :
         {u"Masters/2010/IMG_1.JPG"_s, u".hidden"_s, u"Masters/a.corvane-new"_s, QString()}) {
        EXPECT_EQ(PackageFiles::finishedPath(other), other);
    }
}
