#include "CrashLogView.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class CrashLogViewTest : public testing::Test
{
protected:
    void show(const QByteArray& content)
    {
        write(content);
        m_view = std::make_unique<CrashLogView>(m_path);
        m_view->show();
    }

    void write(const QByteArray& content)
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    [[nodiscard]] QString text() const
    {
        return m_view->findChild<QPlainTextEdit*>(u"crashLogText"_s)->toPlainText();
    }

    [[nodiscard]] QLabel& note() const { return *m_view->findChild<QLabel*>(u"crashLogNote"_s); }

    [[nodiscard]] QPushButton& more() const
    {
        return *m_view->findChild<QPushButton*>(u"showMoreOfCrashLog"_s);
    }

    QTemporaryDir m_folder;
    const QString m_path{m_folder.filePath(u"Corvane \u00e4.crash"_s)};
    std::unique_ptr<CrashLogView> m_view;
};

TEST_F(CrashLogViewTest, aShortLogIsShownWhole)
{
    show("first\n\xC3\xA4\xE2\x82\xAC\n");
    EXPECT_EQ(text(), u"first\n\u00e4\u20ac\n"_s);
    EXPECT_FALSE(more().isVisible());
    EXPECT_FALSE(note().isVisible());
}

TEST_F(CrashLogViewTest, anEmptyLogIsNoError)
{
    show("");
    EXPECT_EQ(text(), u""_s);
    EXPECT_FALSE(note().isVisible());
}

TEST_F(CrashLogViewTest, ofALongLogTheBeginningIsShownAndMoreOnDemand)
{
    QByteArray content;
    while (content.size() < 3 * CrashLogView::kBytesAtATime / 2) {
        content += "line " + QByteArray::number(content.size()) + '\n';
    }
    show(content);
    EXPECT_EQ(text(), QString::fromLatin1(content.left(CrashLogView::kBytesAtATime)));
    EXPECT_TRUE(more().isVisible());
    EXPECT_TRUE(note().isVisible());
    EXPECT_TRUE(note().text().contains(u"128"_s)) << qPrintable(note().text());
    more().click();
    EXPECT_EQ(text(), QString::fromLatin1(content));
    EXPECT_FALSE(more().isVisible());
    EXPECT_FALSE(note().isVisible());
}

TEST_F(CrashLogViewTest, aLetterThatIsCutByAPieceIsWholeAgain)
{
    QByteArray content(CrashLogView::kBytesAtATime - 1, '\n');
    content += "\xC3\xA4";
    show(content);
    more().click();
    EXPECT_TRUE(text().endsWith(u"\n\u00e4"_s));
}

TEST_F(CrashLogViewTest, aLineOfUnreasonableLengthIsShownInPieces)
{
    show(QByteArray(2 * CrashLogView::kLongestLine + 1, 'x') + "\nend");
    const QStringList lines = text().split(u'\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines.at(0).size(), CrashLogView::kLongestLine);
    EXPECT_EQ(lines.at(2), u"x"_s);
    EXPECT_EQ(lines.at(3), u"end"_s);
}

TEST_F(CrashLogViewTest, fiftyMegabytesHoldNothingUp)
{
    write(QByteArray(qsizetype{50} * 1024 * 1024, 'x'));
    QElapsedTimer clock;
    clock.start();
    m_view = std::make_unique<CrashLogView>(m_path);
    m_view->show();
    m_view->grab();
    EXPECT_LT(clock.elapsed(), 5000) << "no more than a piece is read";
    EXPECT_LT(text().size(), 2 * CrashLogView::kBytesAtATime);
    EXPECT_TRUE(more().isVisible());
}

TEST_F(CrashLogViewTest, whatCannotBeReadIsSaid)
{
    m_view = std::make_unique<CrashLogView>(m_path);
    m_view->show();
    EXPECT_TRUE(note().isVisible());
    EXPECT_EQ(note().text(), u"The crash log cannot be read."_s);
    EXPECT_FALSE(more().isVisible());
    m_view = std::make_unique<CrashLogView>(m_folder.path());
    EXPECT_EQ(note().text(), u"The crash log cannot be read."_s) << "a folder";
}

TEST_F(CrashLogViewTest, aLogThatShrinksMeanwhileEndsThere)
{
    show(QByteArray(2 * CrashLogView::kBytesAtATime, '\n'));
    write("short");
    more().click();
    EXPECT_FALSE(more().isVisible());
    EXPECT_EQ(text().size(), CrashLogView::kBytesAtATime);
}

TEST_F(CrashLogViewTest, aLogThatIsGoneMeanwhileKeepsWhatWasShown)
{
    show(QByteArray(2 * CrashLogView::kBytesAtATime, '\n'));
    ASSERT_TRUE(QFile::remove(m_path));
    more().click();
    EXPECT_EQ(note().text(), u"The crash log cannot be read."_s);
    EXPECT_EQ(text().size(), CrashLogView::kBytesAtATime);
}

} // namespace
