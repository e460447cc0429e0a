#include "PackagePhoto.h"

#include "Connection.h"
#include "PhotoLibrary.h"
#include "QtPrinters.h"
#include "Queries.h"
#include "WritableLibrary.h"

#include <QVariantMap>

#include <cmath>

using namespace Qt::StringLiterals;

/// The record of a photo's properties, with columns as other programs may have left them.
class PhotoRecord : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"IMG_1.JPG"_s));
        const PhotoPtr photo = lastImported(*library);
        ASSERT_NE(photo, nullptr);
        m_id = photo->id();
        ASSERT_TRUE(library->close().ok());
        change("UPDATE prox.RKImageProxyState SET fullSizePreviewPath = 'A/shown.jpg'");
    }

    void change(const char* sql) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        connection.value()->database().exec(sql);
    }

    [[nodiscard]] QVariantMap properties() const
    {
        const auto library = open(Access::Read);
        if (library == nullptr) {
            return {};
        }
        const PhotoPtr photo = photoOf(*library);
        return photo ? photo->properties().value_or(QVariantMap()) : QVariantMap();
    }

    /// What the listing of the library says of the photo.
    [[nodiscard]] PhotoFacts facts() const
    {
        const auto library = open(Access::Read);
        const auto photos = library->photos();
        EXPECT_TRUE(photos.ok() && photos.value().size() == 1);
        return photos.ok() && !photos.value().isEmpty() ? photos.value().first() : PhotoFacts();
    }

    [[nodiscard]] PhotoEvidence evidence() const
    {
        const auto library = open(Access::Read);
        const PhotoPtr photo = library == nullptr ? PhotoPtr() : photoOf(*library);
        EXPECT_NE(photo, nullptr);
        return photo ? photo->evidence() : PhotoEvidence();
    }

    [[nodiscard]] bool losesKeyword() const
    {
        const auto library = open(Access::Read);
        const PhotoPtr photo = library == nullptr ? PhotoPtr() : photoOf(*library);
        EXPECT_NE(photo, nullptr);
        return photo && photo->losesKeyword();
    }

    [[nodiscard]] QString master() const
    {
        for (const QString& file : pictureFiles()) {
            if (file.startsWith("Masters/"_L1)) {
                return package() + u'/' + file;
            }
        }
        return {};
    }

    [[nodiscard]] QString preview() const { return package() + u"/Previews/A/shown.jpg"_s; }

private:
    [[nodiscard]] PhotoPtr photoOf(PhotoLibrary& library) const
    {
        library.setSelection({m_id});
        const auto selected = application(library)->selection();
        return selected.isEmpty() ? PhotoPtr() : std::dynamic_pointer_cast<Photo>(selected.first());
    }

    qint64 m_id{0};
};

TEST_F(PhotoRecord, theImageIsThePreviewWhereThereIsOneElseTheMaster)
{
    EXPECT_EQ(properties().value(u"imagePath"_s).toString(), preview());
    EXPECT_EQ(properties().value(u"originalPath"_s).toString(), master());
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewPath = NULL");
    EXPECT_EQ(properties().value(u"imagePath"_s).toString(), master());
    EXPECT_EQ(facts().imagePath, master());
}

TEST_F(PhotoRecord, aPreviewThatIsNotUpToDateMayShowEdits)
{
    EXPECT_FALSE(evidence().edited);
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewUpToDate = NULL");
    EXPECT_FALSE(evidence().edited);
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewUpToDate = 0");
    EXPECT_TRUE(evidence().edited);
}

TEST_F(PhotoRecord, aKeywordThatIsGoneIsToldOfThePhotoThatHadIt)
{
    change("INSERT INTO RKKeyword(modelId, uuid, name, searchName) VALUES(900, 'u', 'n', 'n')");
    change("INSERT INTO RKKeywordForVersion(modelId, versionId, keywordId)"
           " SELECT 900, modelId, 900 FROM RKVersion WHERE showInLibrary = 1");
    EXPECT_FALSE(losesKeyword() || facts().losesKeyword);
    change("DELETE FROM RKKeyword WHERE modelId = 900");
    EXPECT_TRUE(losesKeyword());
    EXPECT_TRUE(facts().losesKeyword);
    change("DELETE FROM RKKeywordForVersion WHERE modelId = 900");
    EXPECT_FALSE(losesKeyword());
}

TEST_F(PhotoRecord, aPreviewStandsAlsoWithoutAMaster)
{
    change("UPDATE RKMaster SET imagePath = NULL");
    EXPECT_EQ(properties().value(u"imagePath"_s).toString(), preview());
    EXPECT_FALSE(properties().contains(u"originalPath"_s));
    EXPECT_EQ(facts().imagePath, preview());
}

TEST_F(PhotoRecord, aPreviewOfAnotherTypeLeavesTheImageOutAndIsNoMaster)
{
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewPath = x'41'");
    EXPECT_FALSE(properties().contains(u"imagePath"_s));
    EXPECT_EQ(properties().value(u"originalPath"_s).toString(), master());
    EXPECT_TRUE(facts().imagePath.isEmpty());
}

TEST_F(PhotoRecord, withNeitherBothAreLeftOut)
{
    change("UPDATE RKMaster SET imagePath = x'41'");
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewPath = NULL");
    EXPECT_FALSE(properties().contains(u"imagePath"_s));
    EXPECT_FALSE(properties().contains(u"originalPath"_s));
    EXPECT_TRUE(facts().missing);
}

TEST_F(PhotoRecord, aPathThatLeadsOutIsNull)
{
    change("UPDATE prox.RKImageProxyState SET fullSizePreviewPath = '../../../etc/passwd'");
    ASSERT_TRUE(properties().contains(u"imagePath"_s));
    EXPECT_TRUE(properties().value(u"imagePath"_s).isNull());
}

TEST_F(PhotoRecord, withoutADateThereIsNoneToCarryOver)
{
    change("UPDATE RKVersion SET imageDate = NULL WHERE showInLibrary = 1");
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const PhotoPtr undated = lastImported(*library);
    ASSERT_NE(undated, nullptr);
    EXPECT_TRUE(std::isnan(undated->date().secondsSince2001));
    import(*library, makePicture(u"IMG_2.JPG"_s));
    const PhotoPtr copy = lastImported(*library);
    ASSERT_NE(copy, nullptr);
    const PhotoDate own = copy->date();
    copy->setDate(undated->date());
    EXPECT_EQ(copy->date(), own);
}
