#include "AdminData.h"
#include "Connection.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "Queries.h"
#include "WritableLibrary.h"

using namespace Qt::StringLiterals;

/// What the library says of the event of its last import.
class LastImportEvent : public WritableLibrary
{
protected:
    /// The first column of every row, as a connection of its own sees them.
    [[nodiscard]] QStringList ask(const char* sql) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Read);
        EXPECT_TRUE(connection.ok());
        return connection.ok() ? Sql::texts(*connection.value(), sql) : QStringList();
    }

    /// Null where no import is told of.
    [[nodiscard]] QString lastEvent() const
    {
        const QStringList told =
            ask("SELECT propertyValue FROM RKAdminData WHERE propertyArea='database.iPhoto'"
                " AND propertyName='lastImportEventUuid'");
        EXPECT_LE(told.size(), 1);
        return told.isEmpty() ? QString() : told.first();
    }

    [[nodiscard]] QStringList events() const
    {
        return ask("SELECT uuid FROM RKFolder WHERE folderType=2 AND isMagic=0 ORDER BY modelId");
    }

    /// Uuid of the event that the photo with this file lies in.
    [[nodiscard]] QString eventOf(const QString& fileName) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Read);
        EXPECT_TRUE(connection.ok());
        if (!connection.ok()) {
            return {};
        }
        return Sql::firstText(*connection.value(),
                              "SELECT projectUuid FROM RKVersion WHERE fileName=? AND"
                              " showInLibrary=1",
                              fileName);
    }

    /// A run of the program that imports these pictures and ends.
    void runWith(const QStringList& names) const
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        for (const QString& name : names) {
            import(*library, makePicture(name));
        }
        ASSERT_TRUE(library->close().ok());
    }

    /// Imports as a program of our own does, into the event of that name.
    void importInto(PhotoLibrary& library, const QString& event, const QString& name) const
    {
        ImportRequest request;
        request.sourcePath = makePicture(name);
        request.eventName = event;
        const Result<qint64> imported = library.importPhoto(request);
        ASSERT_TRUE(imported.ok()) << imported.error().message.toStdString();
    }
};

TEST_F(LastImportEvent, aNewLibraryTellsOfNone)
{
    EXPECT_EQ(lastEvent(), QString());
}

TEST_F(LastImportEvent, itIsTheOneThatTheImportedPhotoLiesIn)
{
    runWith({u"IMG_1.JPG"_s});
    EXPECT_EQ(events().size(), 1);
    EXPECT_FALSE(lastEvent().isEmpty());
    EXPECT_EQ(lastEvent(), eventOf(u"IMG_1.JPG"_s));
    EXPECT_EQ(ask("SELECT storedDataType||' '||persistAfterRebuild FROM RKAdminData WHERE"
                  " propertyName='lastImportEventUuid'"),
              QStringList{u"%1 1"_s.arg(AdminData::kString)});
}

TEST_F(LastImportEvent, importsOfOneRunShareItAndTheLastOneIsAloneInTheAlbumOfTheLastImport)
{
    runWith({u"IMG_1.JPG"_s, u"IMG_2.JPG"_s, u"IMG_3.JPG"_s});
    EXPECT_EQ(events(), QStringList{lastEvent()});
    for (const QString& name : {u"IMG_1.JPG"_s, u"IMG_2.JPG"_s, u"IMG_3.JPG"_s}) {
        EXPECT_EQ(eventOf(name), lastEvent());
    }
    EXPECT_EQ(ask("SELECT versionCount FROM RKFolder WHERE folderType=2 AND isMagic=0"),
              QStringList{u"3"_s});
    EXPECT_EQ(
        ask("SELECT v.fileName FROM RKAlbumVersion a JOIN RKVersion v ON v.modelId=a.versionId"
            " JOIN RKAlbum b ON b.modelId=a.albumId WHERE b.uuid='lastImportAlbum'"),
        QStringList{u"IMG_3.JPG"_s});
    EXPECT_EQ(rows(u"RKImportGroup"_s), 3) << "each import has a group of its own";
    expectSound();
}

TEST_F(LastImportEvent, aLaterRunHasAnEventOfItsOwnAndThatIsTold)
{
    runWith({u"IMG_1.JPG"_s});
    const QString first = lastEvent();
    runWith({u"IMG_2.JPG"_s});
    EXPECT_NE(lastEvent(), first);
    EXPECT_EQ(events(), (QStringList{first, lastEvent()}));
    EXPECT_EQ(eventOf(u"IMG_1.JPG"_s), first);
    EXPECT_EQ(eventOf(u"IMG_2.JPG"_s), lastEvent());
}

TEST_F(LastImportEvent, ofSeveralEventsOfARunItIsThatOfTheLatestImport)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    importInto(*library, u"Sea"_s, u"SEA_1.JPG"_s);
    const QString sea = lastEvent();
    importInto(*library, u"Hills"_s, u"HILLS_1.JPG"_s);
    EXPECT_NE(lastEvent(), sea);
    EXPECT_EQ(lastEvent(), eventOf(u"HILLS_1.JPG"_s));
    importInto(*library, u"Sea"_s, u"SEA_2.JPG"_s);
    EXPECT_EQ(lastEvent(), sea) << "imports of one name share an event";
    EXPECT_EQ(events().size(), 2);
}

TEST_F(LastImportEvent, anImportThatWasUndoneOrRefusedChangesNothing)
{
    runWith({u"IMG_1.JPG"_s});
    const QString before = lastEvent();
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto dropped = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_2.JPG"_s));
    }
    EXPECT_EQ(lastEvent(), before);
    EXPECT_THROW(import(*library, makeFile(u"text.JPG"_s, "no picture")), ScriptingException);
    EXPECT_EQ(lastEvent(), before);
    EXPECT_EQ(events(), QStringList{before});
}

TEST_F(LastImportEvent, anEventThatWentWithItsTurnIsNotTakenAgain)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto dropped = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
    }
    const auto turn = library->beginPhotoTurn();
    import(*library, makePicture(u"IMG_2.JPG"_s));
    turn->commit();
    EXPECT_EQ(events(), QStringList{lastEvent()}) << "it names an event that is not there";
    EXPECT_EQ(eventOf(u"IMG_2.JPG"_s), lastEvent());
    EXPECT_TRUE(library->close().ok());
    expectSound();
}

TEST_F(LastImportEvent, anEventThatWasThrownAwayIsNotTakenAgain)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    import(*library, makePicture(u"IMG_1.JPG"_s));
    const QString thrownAway = lastEvent();
    const PhotoPtr photo = lastImported(*library);
    ASSERT_NE(photo, nullptr);
    photo->removeFrom(application(*library)->photoLibraryAlbum());
    import(*library, makePicture(u"IMG_2.JPG"_s));
    EXPECT_NE(lastEvent(), thrownAway);
    EXPECT_EQ(ask("SELECT uuid FROM RKFolder WHERE folderType=2 AND isMagic=0 AND isInTrash=0"),
              QStringList{lastEvent()});
    EXPECT_EQ(eventOf(u"IMG_2.JPG"_s), lastEvent());
}

TEST_F(LastImportEvent, itIsToldBesideTheDatabasesToo)
{
    for (const QString& name : {u"IMG_1.JPG"_s, u"IMG_2.JPG"_s}) {
        runWith({name});
        const Result<QVariant> model =
            PropertyList::read(package() + u"/Database/DataModelVersion.plist"_s);
        ASSERT_TRUE(model.ok());
        const QVariantMap told = model.value().toMap().value(u"adminProperties"_s).toMap();
        EXPECT_EQ(told.value(u"database.iPhoto|lastImportEventUuid"_s).toString(), lastEvent());
        EXPECT_FALSE(lastEvent().isEmpty());
    }
}
