#include "LibraryCreator.h"

#include "AdminData.h"
#include "LibraryFixture.h"
#include "PropertyList.h"
#include "RowIdIndexes.h"
#include "Schema.h"

#include <QDir>
#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

class LibraryCreatorTest : public LibraryFixture
{
};

TEST_F(LibraryCreatorTest, aNewLibraryHasTheKnownTablesAndRightIndexes)
{
    EXPECT_EQ(Schema::mismatches(connection()).join('\n'_L1).toStdString(), "");
    expectSoundIndexes();
}

TEST_F(LibraryCreatorTest, itsDatabasesHaveTheFormOfTheApplication)
{
    for (const char* schema : {"main", "prop", "prox"}) {
        const std::string name(schema);
        const auto pragma = [&](const char* what) {
            return Sql::text(connection().database().execAndGet("PRAGMA " + name + '.' + what));
        };
        EXPECT_EQ(pragma("page_size"), u"16384"_s) << schema;
        EXPECT_EQ(pragma("auto_vacuum"), u"2"_s) << schema;
        EXPECT_EQ(pragma("journal_mode"), u"delete"_s) << schema;
        EXPECT_EQ(pragma("integrity_check"), u"ok"_s) << schema;
    }
}

TEST_F(LibraryCreatorTest, theOldPlacesOfTheDatabasesAreRelativeLinks)
{
    for (const QString& name : {u"Library.apdb"_s, u"Faces.db"_s, u"BigBlobs.apdb"_s}) {
        const QFileInfo link(package() + "/Database/"_L1 + name);
        EXPECT_TRUE(link.isSymLink()) << name.toStdString();
        EXPECT_TRUE(link.exists()) << name.toStdString();
    }
}

TEST_F(LibraryCreatorTest, everyTableHasACounterAboveItsRows)
{
    const QList<Schema::Table> tables = Schema::tables(Schema::Database::Library);
    int counted = 0;
    for (const Schema::Table& table : tables) {
        const QString next = AdminData::text(connection(), table.name, u"nextModelId"_s);
        if (!next.isNull()) {
            ++counted;
            const std::string sql = "SELECT max(modelId) FROM " + table.name.toStdString();
            EXPECT_GT(next.toLongLong(), Sql::firstInteger(connection(), sql.c_str()).value_or(0));
        }
    }
    EXPECT_GE(counted, 20);
}

TEST_F(LibraryCreatorTest, itsListsAgreeWithTheDatabases)
{
    const Result<QVariant> marks = PropertyList::read(package() + "/Database/tmSync.plist"_L1);
    ASSERT_TRUE(marks.ok());
    EXPECT_EQ(marks.value().toMap().value(u"tmSyncUuid"_s).toString(),
              AdminData::text(connection(), u"database"_s, u"tmSyncUuid"_s));
    const Result<QVariant> words = PropertyList::read(package() + "/Database/Keywords.plist"_L1);
    ASSERT_TRUE(words.ok());
    EXPECT_EQ(words.value().toMap().value(u"keywords"_s).toList().size(), 6);
    const Result<QVariant> info = PropertyList::read(package() + "/Info.plist"_L1);
    ASSERT_TRUE(info.ok());
    EXPECT_EQ(info.value().toMap().value(u"CFBundleShortVersionString"_s).toString(), u"9.6.1"_s);
}

TEST_F(LibraryCreatorTest, twoLibrariesAreNotTheSame)
{
    const QString other = package() + ".other"_L1;
    ASSERT_TRUE(LibraryCreator::create(other).ok());
    auto opened = Connection::open(other, Connection::Mode::Read);
    ASSERT_TRUE(opened.ok());
    EXPECT_NE(AdminData::text(connection(), u"database"_s, u"databaseUuid"_s),
              AdminData::text(*opened.value(), u"database"_s, u"databaseUuid"_s));
}

TEST_F(LibraryCreatorTest, whatIsThereAlreadyIsNotTouched)
{
    const QDir before(package());
    const QStringList names = before.entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const Result<void> again = LibraryCreator::create(package());
    ASSERT_FALSE(again.ok());
    EXPECT_EQ(again.error().code, ErrorCode::NotWritable);
    EXPECT_EQ(QDir(package()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), names);
    EXPECT_FALSE(LibraryCreator::create(QString()).ok());
    EXPECT_FALSE(LibraryCreator::create(package() + "/none/New.photolibrary"_L1).ok());
}

TEST_F(LibraryCreatorTest, anIndependentCheckFindsNothing)
{
    connection().rollback();
    const QString script = QStringLiteral(CORVANE_SHARED_DATA) + "/../accept/librarycheck.py"_L1;
    if (!QFile::exists(script)) {
        return;
    }
    QProcess check;
    check.start(u"python3"_s, {script, package(), u"--strict"_s});
    ASSERT_TRUE(check.waitForFinished());
    EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardOutput().toStdString()
                                   << check.readAllStandardError().toStdString();
}
