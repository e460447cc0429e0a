#include "Connection.h"
#include "QtPrinters.h"
#include "Queries.h"
#include "WritableLibrary.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;

/// A library that is read while somebody else writes to it.
class ReaderBesideWriter : public WritableLibrary
{
protected:
    /// Imports one photo with a comment.
    void SetUp() override
    {
        WritableLibrary::SetUp();
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"IMG_1.JPG"_s));
        const PhotoPtr photo = lastImported(*library);
        ASSERT_NE(photo, nullptr);
        photo->setComment(u"0"_s);
        photo->setRating(0);
        ASSERT_TRUE(library->close().ok());
    }

    [[nodiscard]] std::unique_ptr<Connection> connection(int busyMilliseconds) const
    {
        auto opened = Connection::open(package(), Connection::Mode::Write, busyMilliseconds);
        EXPECT_TRUE(opened.ok());
        return opened.ok() ? std::move(opened).value() : nullptr;
    }

    /// One transaction that says the same number in all three databases.
    static void write(Connection& connection, int number)
    {
        connection.beginImmediate();
        Sql::execute(connection, "UPDATE RKVersion SET processedWidth=?", number);
        Sql::execute(connection,
                     "UPDATE prop.RKUniqueString SET stringProperty=?1 WHERE modelId IN"
                     " (SELECT stringId FROM prop.RKIptcProperty"
                     " WHERE propertyKey='Caption/Abstract')",
                     QString::number(number));
        Sql::execute(connection,
                     "UPDATE prox.RKImageProxyState SET fullSizePreviewPath=?",
                     u"%1.jpg"_s.arg(number));
        connection.commit();
    }
};

TEST_F(ReaderBesideWriter, ofAPhotosTurnAListingShowsAllOrNothing)
{
    const auto reader = open(Access::Read);
    ASSERT_NE(reader, nullptr);
    write(*connection(Connection::kBusyMilliseconds), 0);
    std::atomic<bool> stop{false};
    std::thread writer([this, &stop] {
        const auto mine = connection(Connection::kBusyMilliseconds);
        for (int number = 1; !stop; ++number) {
            write(*mine, number);
        }
    });
    constexpr int kStates = 150;
    int states = 0;
    int torn = 0;
    for (int last = -1; states < kStates;) {
        const Result<QList<PhotoFacts>> photos = reader->photos();
        if (!photos.ok() || photos.value().size() != 1) {
            ADD_FAILURE() << "it could not be read";
            break;
        }
        const PhotoFacts& photo = photos.value().first();
        const QString number = QString::number(photo.width);
        const QString preview = u"%1/Previews/%2.jpg"_s.arg(package(), number);
        torn += photo.comment != number || photo.previewPath != preview ? 1 : 0;
        states += photo.width != last ? 1 : 0;
        last = photo.width;
    }
    stop = true;
    writer.join();
    EXPECT_EQ(torn, 0) << "of " << states;
}

TEST_F(ReaderBesideWriter, aTurnThatIsNotCommittedIsNotSeen)
{
    const auto writer = open(Access::Write);
    const auto reader = open(Access::Read);
    ASSERT_TRUE(writer != nullptr && reader != nullptr);
    const std::unique_ptr<PhotoTurn> turn = writer->beginPhotoTurn();
    import(*writer, makePicture(u"IMG_2.JPG"_s));
    EXPECT_EQ(reader->photos().value().size(), 1);
    turn->commit();
    EXPECT_EQ(reader->photos().value().size(), 2);
}

TEST_F(ReaderBesideWriter, whatAnotherProcessIsWritingIsNoProblemOfTheLibrary)
{
    const auto writer = open(Access::Write);
    const auto reader = open(Access::Read);
    ASSERT_TRUE(writer != nullptr && reader != nullptr);
    const QString picture = makePicture(u"IMG_2.JPG"_s);
    std::atomic<bool> stop{false};
    std::thread scan([&] {
        while (!stop) {
            const std::unique_ptr<PhotoTurn> turn = writer->beginPhotoTurn();
            import(*writer, picture);
            turn->commit();
        }
    });
    constexpr int kChecks = 12;
    QStringList problems;
    for (int i = 0; i < kChecks; ++i) {
        const Result<LibrarySummary> summary = reader->summary();
        problems << (summary.ok() ? summary.value().problems : QStringList(u"no summary"_s));
    }
    stop = true;
    scan.join();
    EXPECT_EQ(problems.join(u'\n').toStdString(), "");
}

TEST_F(ReaderBesideWriter, aSnapshotHoldsOffACommitAndNothingElse)
{
    const auto reader = connection(0);
    const auto writer = connection(0);
    ASSERT_TRUE(reader != nullptr && writer != nullptr);
    {
        const Connection::Snapshot snapshot(*reader);
        const char* const width = "SELECT processedWidth FROM RKVersion WHERE showInLibrary=1";
        const std::optional<qint64> before = Sql::firstInteger(*reader, width);
        try {
            write(*writer, 4711);
            ADD_FAILURE() << "it was committed";
        } catch (const SQLite::Exception& exception) {
            EXPECT_EQ(exception.getErrorCode(), SQLITE_BUSY);
        }
        EXPECT_EQ(Sql::firstInteger(*reader, width), before);
        {
            const Connection::Snapshot within(*reader);
        }
        EXPECT_TRUE(reader->inTransaction()) << "the inner one ended the outer one";
    }
    EXPECT_FALSE(reader->inTransaction());
    writer->commit();
}
