#include "SidebarModel.h"

#include "FactsBuilder.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Kind = PhotoFilter::Collection::Kind;

namespace
{

class SidebarModelTest : public testing::Test
{
protected:
    SidebarModelTest()
    {
        m_contents.photos = {FactsBuilder::photo(1, u"a.dng"_s, 10, u"Walk"_s),
                             FactsBuilder::photo(2, u"b.dng"_s, 10, u"Walk"_s),
                             FactsBuilder::photo(3, u"c.dng"_s, 11, u"Walk"_s),
                             FactsBuilder::photo(4, u"d.dng"_s, 11, u"Walk"_s)};
        m_contents.photos[1].date = 59.0 * 86400;
        m_contents.photos[3].hidden = true;
        m_contents.photos[0].keywords = QStringList{u"Water"_s, u"lake"_s};
        m_contents.photos[2].keywords = QStringList{u"Water"_s};
        m_contents.photos[2].albums = QStringList{u"Best"_s};
        m_contents.albums = QStringList{u"Empty"_s, u"Best"_s};
        m_contents.lastImport = {3, 4};
        m_contents.trash = {FactsBuilder::photo(9, u"t.dng"_s, 0, QString())};
        m_model.setContents(m_contents);
    }

    [[nodiscard]] QStringList texts(const QModelIndex& parent = {}) const
    {
        QStringList found;
        for (int row = 0; row < m_model.rowCount(parent); ++row) {
            found += m_model.index(row, 0, parent).data().toString();
        }
        return found;
    }

    LibraryContents m_contents;
    SidebarModel m_model;
};

} // namespace

TEST_F(SidebarModelTest, theKindsOfCollectionsStandInTheirOrder)
{
    EXPECT_EQ(texts(),
              (QStringList{u"All Photos (3)"_s,
                           u"Last Import (1)"_s,
                           u"Events"_s,
                           u"Albums"_s,
                           u"Keywords"_s,
                           u"Trash (1)"_s}));
}

TEST_F(SidebarModelTest, eventsHaveDatesAndCountsAndSameNamesStayApart)
{
    const QStringList events = texts(m_model.index(2, 0));
    ASSERT_EQ(events.size(), 2);
    EXPECT_TRUE(events[0].startsWith(u"Walk, "_s) && events[0].endsWith(u"(2)"_s));
    EXPECT_TRUE(events[0].contains(u"Jan 2001 – Mar 2001"_s)) << "from the first to the last";
    EXPECT_TRUE(events[1].endsWith(u"(1)"_s)) << "hidden photos do not count";
    EXPECT_FALSE(events[1].contains(u" – "_s));
    const QVariant days = m_model.index(0, 0, m_model.index(2, 0)).data(Qt::ToolTipRole);
    EXPECT_TRUE(days.toString().contains(u"1 March"_s) || days.toString().contains(u"March 1"_s) ||
                days.toString().contains(u"01 Mar"_s) || days.toString().contains(u" 1 Mar"_s))
        << days.toString().toStdString();
}

TEST_F(SidebarModelTest, albumsAreTheLibrarysEmptyOnesTooAndKeywordsAreSorted)
{
    EXPECT_EQ(texts(m_model.index(3, 0)), (QStringList{u"Empty (0)"_s, u"Best (1)"_s}));
    EXPECT_EQ(texts(m_model.index(4, 0)), (QStringList{u"lake (1)"_s, u"Water (2)"_s}));
}

TEST_F(SidebarModelTest, anItemStandsForItsCollectionAndAHeadingForNone)
{
    EXPECT_EQ(SidebarModel::collection(m_model.index(2, 0)), std::nullopt);
    const auto event = SidebarModel::collection(m_model.index(1, 0, m_model.index(2, 0)));
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->kind, Kind::Event);
    EXPECT_EQ(event->eventId, 11);
}

TEST_F(SidebarModelTest, aCollectionIsFoundAgainAndAllPhotosStandInForOneThatIsGone)
{
    const QModelIndex album = m_model.indexOf({Kind::Album, 0, u"Best"_s});
    EXPECT_EQ(album.data(), u"Best (1)"_s);
    EXPECT_EQ(m_model.indexOf({Kind::Keyword, 0, u"gone"_s}), m_model.index(0, 0));
}
