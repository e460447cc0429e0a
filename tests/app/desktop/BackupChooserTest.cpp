#include "BackupChooser.h"

#include "WholeTexts.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimeZone>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class BackupChooserTest : public testing::Test
{
protected:
    [[nodiscard]] static LibraryBackup backup(int day, std::optional<qint64> photos)
    {
        const QDateTime moment(QDate(2026, 11, day), QTime(9, 5, 1), Qt::UTC);
        return {moment.toString(u"yyyyMMdd-HHmmss-zzz"_s), u"/b"_s, moment, 3000000, photos};
    }

    void make(const QList<LibraryBackup>& backups)
    {
        m_chooser = std::make_unique<BackupChooser>(u"Photos.photolibrary"_s, backups, nullptr);
        QObject::connect(m_chooser.get(), &BackupChooser::chosen, [this](const auto& chosen) {
            m_chosen += chosen.name;
        });
        m_chooser->show();
    }

    QTreeWidget& list() { return *m_chooser->findChild<QTreeWidget*>(u"backups"_s); }

    QPushButton& restore() { return *m_chooser->findChild<QPushButton*>(u"restoreBackup"_s); }

    std::unique_ptr<BackupChooser> m_chooser;
    QStringList m_chosen;
};

TEST_F(BackupChooserTest, theNewestIsFirstAndChosenByTheButton)
{
    make({backup(20, 4), backup(21, 5)});
    ASSERT_EQ(list().topLevelItemCount(), 2);
    const QTreeWidgetItem& first = *list().topLevelItem(0);
    EXPECT_EQ(first.text(0), backup(21, 5).moment.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"_s));
    EXPECT_EQ(first.text(1), u"5 photos"_s);
    EXPECT_EQ(first.text(2), u"2.9 MB"_s);
    QTest::mouseClick(&restore(), Qt::LeftButton);
    EXPECT_EQ(m_chosen, QStringList{u"20261121-090501-000"_s});
    expectNothingIsCutOff(*m_chooser);
}

TEST_F(BackupChooserTest, theOneThatIsSelectedIsChosen)
{
    make({backup(20, 4), backup(21, 5)});
    list().setCurrentItem(list().topLevelItem(1));
    QTest::mouseClick(&restore(), Qt::LeftButton);
    EXPECT_EQ(m_chosen, QStringList{u"20261120-090501-000"_s});
}

TEST_F(BackupChooserTest, aDamagedCopyIsShownButCannotBeChosen)
{
    make({backup(20, 4), backup(21, std::nullopt)});
    EXPECT_EQ(list().topLevelItem(0)->text(1), u"damaged"_s);
    EXPECT_EQ(list().currentItem(), list().topLevelItem(1)) << "the newest that is whole";
    list().setCurrentItem(list().topLevelItem(0));
    EXPECT_EQ(list().currentItem(), list().topLevelItem(1));
    make({backup(21, std::nullopt)});
    EXPECT_FALSE(restore().isEnabled());
}

TEST_F(BackupChooserTest, whereThereIsNoneItSaysSoAndHowOneIsMade)
{
    make({});
    const QString text = m_chooser->findChild<QLabel*>(u"backupsText"_s)->text();
    EXPECT_TRUE(text.startsWith(u"There are no backups of this library yet."_s));
    EXPECT_TRUE(text.contains(u"Back Up Now"_s));
    EXPECT_FALSE(restore().isVisible());
    EXPECT_FALSE(list().isVisible());
}

TEST_F(BackupChooserTest, whileItHasToWaitNothingIsChosenAndItSaysWhy)
{
    make({backup(20, 4)});
    m_chooser->setWhyNot(u"A scan is running."_s);
    EXPECT_FALSE(restore().isEnabled());
    auto& why = *m_chooser->findChild<QLabel*>(u"whyNotRestored"_s);
    EXPECT_TRUE(why.isVisible());
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(m_chosen, QStringList());
    m_chooser->setWhyNot({});
    EXPECT_TRUE(restore().isEnabled());
    EXPECT_FALSE(why.isVisible());
}

} // namespace
