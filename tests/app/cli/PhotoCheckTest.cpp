#include "PhotoCheck.h"

#include "Bitmap.h"
#include "ImageProperties.h"
#include "JpegDestination.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

/// A picture two folders deep, and what is said of its file.
class CheckedFile : public testing::Test
{
protected:
    using Kind = PhotoCheck::Problem::Kind;

    void SetUp() override
    {
        const Result<QByteArray> bytes =
            JpegDestination::encode(Bitmap(16, 16, Transfer::Srgb), ImageProperties(), 0.9);
        ASSERT_TRUE(bytes.ok());
        ASSERT_TRUE(QDir().mkpath(inner()));
        QFile file(picture());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes.value()), bytes.value().size());
    }

    [[nodiscard]] QString root() const { return m_folder.path(); }

    [[nodiscard]] QString outer() const { return root() + u"/outer"_s; }

    [[nodiscard]] QString inner() const { return outer() + u"/inner"_s; }

    [[nodiscard]] QString picture() const { return inner() + u"/IMG_1.JPG"_s; }

    static void expectSaid(const QString& path, const QString& sentence)
    {
        const std::optional<PhotoCheck::Problem> problem = PhotoCheck::problemOf(path);
        ASSERT_TRUE(problem.has_value()) << path.toStdString();
        EXPECT_EQ(problem->kind, Kind::Missing);
        EXPECT_EQ(problem->sentence, sentence);
    }

    [[nodiscard]] static QString denied(const QString& path)
    {
        return u"The file %1 cannot be read: permission denied."_s.arg(path);
    }

    [[nodiscard]] static QString missing(const QString& path)
    {
        return u"The file %1 is missing."_s.arg(path);
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(CheckedFile, aSoundOneHasNoProblem)
{
    const OrdinaryUser user({root()});
    EXPECT_FALSE(PhotoCheck::problemOf(picture()).has_value());
}

TEST_F(CheckedFile, inAFolderThatCannotBeEnteredItIsDeniedAndNotMissing)
{
    const OrdinaryUser user({root()});
    for (const QString& folder : {inner(), outer()}) {
        for (const mode_t mode : {0000, 0444, 0666}) {
            const WithPermissions closed(folder, mode);
            expectSaid(picture(), denied(picture()));
        }
    }
}

TEST_F(CheckedFile, whetherItIsThereCannotBeToldFromOutsideAClosedFolder)
{
    const OrdinaryUser user({root()});
    const QString absent = inner() + u"/NONE.JPG"_s;
    expectSaid(absent, missing(absent));
    const WithPermissions closed(inner(), 0000);
    expectSaid(absent, denied(absent));
    expectSaid(inner() + u"/deeper/NONE.JPG"_s, denied(inner() + u"/deeper/NONE.JPG"_s));
}

TEST_F(CheckedFile, aFolderThatIsOnlyNotListedHidesNothing)
{
    const OrdinaryUser user({root()});
    const WithPermissions unlisted(inner(), 0111);
    EXPECT_FALSE(PhotoCheck::problemOf(picture()).has_value());
    const QString absent = inner() + u"/NONE.JPG"_s;
    expectSaid(absent, missing(absent));
}

TEST_F(CheckedFile, oneThatMayNotBeReadItselfIsDenied)
{
    const OrdinaryUser user({root()});
    const WithPermissions closed(picture(), 0222);
    expectSaid(picture(), denied(picture()));
}

TEST_F(CheckedFile, aFolderInItsPlaceOrInThatOfAFolderAFileIsMissing)
{
    expectSaid(inner(), missing(inner()));
    expectSaid(picture() + u"/IMG_2.JPG"_s, missing(picture() + u"/IMG_2.JPG"_s));
}

TEST_F(CheckedFile, aPathThatTheLibraryDoesNotKnowIsSaidToBeNone)
{
    expectSaid(QString(), u"The master is offline, or its path leads out of the library."_s);
}
