#include "Inspector.h"

#include "FactsBuilder.h"

#include <QApplication>
#include <QLocale>
#include <QScrollBar>
#include <QTest>
#include <QTextDocument>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class InspectorTest : public testing::Test
{
protected:
    void SetUp() override { QLocale::setDefault(QLocale(QLocale::English)); }

    void TearDown() override { QLocale::setDefault(m_before); }

    static PhotoFacts photo()
    {
        PhotoFacts photo = FactsBuilder::photo(7, u"IMG_7.cr2"_s, 3, u"Elder Park"_s);
        photo.name = u"The lake <at> dusk & later"_s;
        photo.comment = u"First line\nSecond line"_s;
        photo.rating = 4;
        photo.date = 561115092; // 2018-10-13T09:18:12
        photo.width = 6000;
        photo.height = 4000;
        photo.latitude = -34.9285;
        photo.longitude = 138.6007;
        photo.altitude = 48.2;
        photo.keywords = QStringList{u"Lake"_s, u"Evening"_s};
        photo.albums = QStringList{u"Best"_s};
        photo.previewPath = u"/library/Previews/IMG_7.jpg"_s;
        photo.thumbnailPath = u"/library/Thumbnails/IMG_7.jpg"_s;
        photo.raw = true;
        photo.edited = true;
        photo.rotated = true;
        photo.hidden = true;
        photo.bytes = 16128420;
        return photo;
    }

    [[nodiscard]] bool says(const QString& text) const
    {
        return m_inspector.toPlainText().contains(text);
    }

    QLocale m_before; // numbers are written as the system's locale wants them
    Inspector m_inspector;
};

TEST_F(InspectorTest, itTellsTheFactsOfAPhoto)
{
    m_inspector.showPhoto(photo());
    for (const QString& fact : {u"The lake <at> dusk & later"_s,
                                u"IMG_7.cr2"_s,
                                u"Elder Park"_s,
                                u"2018-10-13 09:18:12"_s,
                                u"RAW, edited, rotated, hidden"_s,
                                u"6000 × 4000 (24.0 MP)"_s,
                                u"15.4 MB (16,128,420 bytes)"_s,
                                u"4 of 5"_s,
                                u"First line\nSecond line"_s,
                                u"Lake\nEvening"_s,
                                u"Best"_s,
                                u"34.92850° S, 138.60070° E"_s,
                                u"48 m"_s,
                                u"/library/Masters/IMG_7.cr2"_s,
                                u"/library/Previews/IMG_7.jpg"_s,
                                u"/library/Thumbnails/IMG_7.jpg"_s}) {
        EXPECT_TRUE(says(fact)) << fact.toStdString() << '\n'
                                << m_inspector.toPlainText().toStdString();
    }
}

TEST_F(InspectorTest, aMissingOriginalIsCalledSo)
{
    PhotoFacts missing = photo();
    missing.missing = true;
    missing.bytes = 0;
    m_inspector.showPhoto(missing);
    EXPECT_TRUE(says(u"original missing"_s));
    EXPECT_FALSE(says(u"MB"_s));
    EXPECT_FALSE(says(u"bytes"_s));
}

TEST_F(InspectorTest, whatIsNotKnownHasNoLine)
{
    m_inspector.showPhoto(FactsBuilder::photo(1, u"IMG_1.jpg"_s, 0, QString()));
    for (const QString& name :
         {u"Comment"_s, u"Keywords"_s, u"Position"_s, u"State"_s, u"Event"_s}) {
        EXPECT_FALSE(says(name)) << name.toStdString();
    }
}

TEST_F(InspectorTest, ofSeveralPhotosItTellsFigures)
{
    PhotoFigures figures;
    PhotoFacts one = photo();
    figures.add(one);
    one.missing = true;
    one.bytes = 0;
    one.keywords = QStringList{u"Corvane Original"_s, u"Corvane Processed"_s};
    figures.add(one);
    one.movie = true;
    figures.add(one);
    m_inspector.showFigures(figures);
    EXPECT_TRUE(says(u"3 photos"_s));
    EXPECT_TRUE(says(u"15.4 MB (16,128,420 bytes)"_s));
    EXPECT_TRUE(says(u"Original missing"_s));
    EXPECT_TRUE(says(u"Converted before"_s));
    EXPECT_TRUE(says(u"Movies"_s));
    EXPECT_FALSE(says(u"IMG_7"_s));
    EXPECT_EQ(figures.raw, 3);
    EXPECT_EQ(figures.edited, 3);
    EXPECT_EQ(figures.missing, 2);
    EXPECT_EQ(figures.converted, 2);
    EXPECT_EQ(figures.processed, 2);
    EXPECT_EQ(figures.movies, 1);
}

TEST_F(InspectorTest, withoutASelectionItSaysSo)
{
    EXPECT_TRUE(says(u"No photo selected"_s));
    m_inspector.showPhoto(photo());
    m_inspector.showNothing();
    EXPECT_FALSE(says(u"IMG_7"_s));
}

TEST_F(InspectorTest, nothingIsCutOffHoweverNarrowItIs)
{
    PhotoFacts one = photo();
    one.originalPath = u"/library/"_s + u"unbreakable_name_"_s.repeated(30);
    m_inspector.showPhoto(one);
    m_inspector.resize(m_inspector.minimumSizeHint());
    m_inspector.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_inspector));
    EXPECT_LE(m_inspector.document()->size().width(), m_inspector.viewport()->width());
    EXPECT_EQ(m_inspector.horizontalScrollBar()->maximum(), 0);
    EXPECT_GT(m_inspector.verticalScrollBar()->maximum(), 0);
}

TEST_F(InspectorTest, itsTextCanBeSelectedWithMouseAndKeys)
{
    EXPECT_TRUE(m_inspector.textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    EXPECT_TRUE(m_inspector.textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
    EXPECT_FALSE(m_inspector.accessibleName().isEmpty());
    m_inspector.showPhoto(photo());
    m_inspector.selectAll();
    EXPECT_TRUE(m_inspector.textCursor().selectedText().contains(u"IMG_7.cr2"_s));
}

TEST_F(InspectorTest, anotherPaletteColoursItAnew)
{
    m_inspector.showPhoto(photo());
    const QString light = m_inspector.toHtml();
    QPalette dark(QColor(40, 40, 40));
    m_inspector.setPalette(dark);
    EXPECT_NE(m_inspector.toHtml(), light);
    EXPECT_TRUE(says(u"IMG_7.cr2"_s));
}

} // namespace
