#include "PhotoSelection.h"

#include "Console.h"

#include <QBuffer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class PhotoSelectionTest : public testing::Test
{
protected:
    PhotoSelectionTest()
    {
        m_photos = {photo(29, u"Elder Park"_s, {u"Test Album"_s}, {}),
                    photo(13, u"Import"_s, {u"Pumpkin Farm"_s, u"AlbumInFolder"_s}, {u"Katie"_s}),
                    photo(1, u"Import"_s, {}, {}),
                    photo(3, u"Import"_s, {u"Pumpkin Farm"_s}, {u"Corvane Original"_s})};
        m_photos[2].raw = true;
        m_photos[3].raw = true;
    }

    static PhotoFacts
    photo(qint64 id, const QString& roll, const QStringList& albums, const QStringList& keywords)
    {
        PhotoFacts facts;
        facts.id = id;
        facts.rollName = roll;
        facts.albums = albums;
        facts.keywords = keywords;
        return facts;
    }

    [[nodiscard]] QList<qint64>
    chosen(const SelectionOptions& options,
           PhotoSelection::WithoutSelection without = PhotoSelection::WithoutSelection::All) const
    {
        QList<qint64> ids;
        for (const PhotoFacts& facts : PhotoSelection::choose(m_photos, options, without).photos) {
            ids += facts.id;
        }
        return ids;
    }

    QList<PhotoFacts> m_photos;
};

} // namespace

TEST_F(PhotoSelectionTest, withoutAnyOptionTheCommandDecides)
{
    EXPECT_EQ(chosen({}), (QList<qint64>{29, 13, 1, 3}));
    EXPECT_EQ(chosen({}, PhotoSelection::WithoutSelection::Raw), QList<qint64>{1});
}

TEST_F(PhotoSelectionTest, rawLeavesOutConvertedOriginalsInWhateverLettersTheLibraryHasTheKeyword)
{
    m_photos[3].keywords = QStringList{u"corvane original"_s};
    EXPECT_EQ(chosen({}, PhotoSelection::WithoutSelection::Raw), QList<qint64>{1});
}

TEST_F(PhotoSelectionTest, rawLeavesOutOriginalsThatWereConverted)
{
    SelectionOptions options;
    options.raw = true;
    EXPECT_EQ(chosen(options), QList<qint64>{1});
}

TEST_F(PhotoSelectionTest, theSameKindUnitesInTheCataloguesOrder)
{
    SelectionOptions options;
    options.ids = {3, 29};
    EXPECT_EQ(chosen(options, PhotoSelection::WithoutSelection::Raw), (QList<qint64>{29, 3}));
    options = {};
    options.albums = {u"AlbumInFolder"_s, u"Test Album"_s};
    EXPECT_EQ(chosen(options), (QList<qint64>{29, 13}));
}

TEST_F(PhotoSelectionTest, differentKindsIntersect)
{
    SelectionOptions options;
    options.rolls = {u"Import"_s};
    options.albums = {u"Pumpkin Farm"_s};
    options.keywords = {u"katie"_s};
    EXPECT_EQ(chosen(options), QList<qint64>{13});
    options.ids = {29};
    EXPECT_EQ(chosen(options), QList<qint64>{});
}

TEST_F(PhotoSelectionTest, hiddenPhotosAreSelectedByIdAlone)
{
    m_photos[0].hidden = true;
    SelectionOptions options;
    options.all = true;
    EXPECT_EQ(chosen(options), (QList<qint64>{13, 1, 3}));
    options = {};
    options.ids = {29};
    EXPECT_EQ(chosen(options), QList<qint64>{29});
}

TEST_F(PhotoSelectionTest, moviesAreNeverSelected)
{
    m_photos[0].movie = true;
    SelectionOptions options;
    options.ids = {29};
    const ChosenPhotos result =
        PhotoSelection::choose(m_photos, options, PhotoSelection::WithoutSelection::All);
    EXPECT_TRUE(result.photos.isEmpty());
    EXPECT_EQ(result.notes, QStringList{u"No photo with the id 29 can be selected."_s});
}

TEST_F(PhotoSelectionTest, whatMatchesNothingIsSaid)
{
    SelectionOptions options;
    options.ids = {4};
    options.rolls = {u"A"_s};
    options.albums = {u"B"_s};
    options.keywords = {u"C"_s};
    EXPECT_EQ(
        PhotoSelection::choose(m_photos, options, PhotoSelection::WithoutSelection::All).notes,
        (QStringList{u"No photo with the id 4 can be selected."_s,
                     u"There is no event “A” with photos in it."_s,
                     u"There is no album “B” with photos in it."_s,
                     u"No photo carries the keyword “C”."_s}));
}

TEST_F(PhotoSelectionTest, whyNothingIsSelectedIsSaidInALine)
{
    const auto said = [this](const SelectionOptions& options,
                             PhotoSelection::WithoutSelection without) {
        QBuffer output;
        QBuffer error;
        output.open(QIODevice::WriteOnly);
        error.open(QIODevice::WriteOnly);
        Console console(output, error, {});
        PhotoSelection::explainNothing(PhotoSelection::choose(m_photos, options, without), console);
        return error.data().toStdString();
    };
    using enum PhotoSelection::WithoutSelection;
    SelectionOptions options;
    EXPECT_EQ(said(options, Raw), "");
    options.albums = {u"Pumpkin Farm"_s};
    options.keywords = {u"none"_s};
    EXPECT_EQ(said(options, All), "No photo matches the selection.\n");

    const std::string allConverted =
        "No photo matches the selection: all RAW photos are converted already.\n";
    m_photos[2].raw = false;
    EXPECT_EQ(said({}, Raw), allConverted);
    options = {};
    options.raw = true;
    EXPECT_EQ(said(options, All), allConverted);
    options.rolls = {u"Elder Park"_s}; // no RAW photo at all
    EXPECT_EQ(said(options, All), "No photo matches the selection.\n");
    m_photos[2].raw = true; // not converted, but not present either
    m_photos[2].missing = true;
    options = {};
    options.present = true;
    EXPECT_EQ(said(options, Raw), "No photo matches the selection.\n");
}

TEST_F(PhotoSelectionTest, presentLeavesOutAndCountsWhatHasNoReadableMaster)
{
    m_photos[0].unreadable = true;
    m_photos[2].missing = true;
    SelectionOptions options;
    options.present = true;
    EXPECT_EQ(chosen(options), (QList<qint64>{13, 3}));
    EXPECT_EQ(
        PhotoSelection::choose(m_photos, options, PhotoSelection::WithoutSelection::All).leftOut,
        2);
}
