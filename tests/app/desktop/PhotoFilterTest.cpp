#include "PhotoFilter.h"

#include "FactsBuilder.h"
#include "PhotoModel.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Kind = PhotoFilter::Collection::Kind;

namespace
{

class PhotoFilterTest : public testing::Test
{
protected:
    PhotoFilterTest()
    {
        QList<PhotoFacts> photos{FactsBuilder::photo(1, u"lake.dng"_s, 10, u"Walk"_s),
                                 FactsBuilder::photo(2, u"Cat.jpg"_s, 11, u"Home"_s),
                                 FactsBuilder::photo(3, u"apple.jpg"_s, 11, u"Home"_s),
                                 FactsBuilder::photo(4, u"secret.jpg"_s, 11, u"Home"_s)};
        photos[0].date = 300;
        photos[0].keywords = QStringList{u"Water"_s};
        photos[1].date = 100;
        photos[1].albums = QStringList{u"Pets"_s};
        photos[1].comment = u"asleep in the sun"_s;
        photos[1].bytes = 9000;
        photos[2].date = 200;
        photos[3].hidden = true;
        m_model.setPhotos(photos);
        m_filter.setSourceModel(&m_model);
    }

    [[nodiscard]] QList<qint64> shown() const
    {
        QList<qint64> ids;
        for (int row = 0; row < m_filter.rowCount(); ++row) {
            ids += m_filter.photo(m_filter.index(row, 0)).id;
        }
        return ids;
    }

    void pick(Kind kind, qint64 eventId = 0, const QString& name = {})
    {
        m_filter.setCollection({kind, eventId, name}, {3});
    }

    PhotoModel m_model;
    PhotoFilter m_filter;
};

} // namespace

TEST_F(PhotoFilterTest, hiddenPhotosAreNeverShown)
{
    EXPECT_EQ(shown(), (QList<qint64>{1, 2, 3}));
}

TEST_F(PhotoFilterTest, aCollectionShowsItsPhotosOnly)
{
    pick(Kind::Event, 11);
    EXPECT_EQ(shown(), (QList<qint64>{2, 3}));
    pick(Kind::Album, 0, u"Pets"_s);
    EXPECT_EQ(shown(), QList<qint64>{2});
    pick(Kind::Keyword, 0, u"Water"_s);
    EXPECT_EQ(shown(), QList<qint64>{1});
    pick(Kind::LastImport);
    EXPECT_EQ(shown(), QList<qint64>{3});
    pick(Kind::AllPhotos);
    EXPECT_EQ(shown(), (QList<qint64>{1, 2, 3}));
}

TEST_F(PhotoFilterTest, everyWordOfTheSearchMustBeSomewhere)
{
    m_filter.setSearchText(u"home"_s);
    EXPECT_EQ(shown(), (QList<qint64>{2, 3}));
    m_filter.setSearchText(u"  SUN home "_s);
    EXPECT_EQ(shown(), QList<qint64>{2});
    m_filter.setSearchText(u"water sun"_s);
    EXPECT_EQ(shown(), QList<qint64>{});
    m_filter.setSearchText(QString());
    EXPECT_EQ(shown().size(), 3);
}

TEST_F(PhotoFilterTest, photosAreSortedByDateSizeOrNameAndBackToTheLibrarysOrder)
{
    m_filter.setOrder(PhotoFilter::Order::Date, false);
    EXPECT_EQ(shown(), (QList<qint64>{2, 3, 1}));
    m_filter.setOrder(PhotoFilter::Order::Date, true);
    EXPECT_EQ(shown(), (QList<qint64>{1, 3, 2}));
    m_filter.setOrder(PhotoFilter::Order::Size, true);
    EXPECT_EQ(shown(), (QList<qint64>{2, 3, 1}));
    m_filter.setOrder(PhotoFilter::Order::Name, false);
    EXPECT_EQ(shown().size(), 3);
    EXPECT_EQ(shown().first(), QString::localeAwareCompare(u"apple"_s, u"Cat"_s) < 0 ? 3 : 2);
    m_filter.setOrder(PhotoFilter::Order::Library, true);
    EXPECT_EQ(shown(), (QList<qint64>{3, 2, 1}));
    m_filter.setOrder(PhotoFilter::Order::Library, false);
    EXPECT_EQ(shown(), (QList<qint64>{1, 2, 3}));
}
