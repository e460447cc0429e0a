#include "TrashDialogs.h"

#include "Connection.h"
#include "LibraryWindowFixture.h"
#include "PhotoTexts.h"
#include "WhenModal.h"

#include <QAbstractButton>
#include <QAction>
#include <QMessageBox>

using namespace Qt::StringLiterals;

class TrashDialogsTest : public LibraryWindowFixture
{
protected:
    [[nodiscard]] virtual qsizetype thrownAway() const { return 1; }

    void SetUp() override
    {
        LibraryWindowFixture::SetUp();
        const auto opened = PhotoLibrary::open(library(), {.access = Access::Write});
        ASSERT_TRUE(opened.ok());
        const auto application =
            opened.value()->applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
        const AlbumPtr all = application->photoLibraryAlbum();
        const QList<PhotoPtr> photos = all->photos();
        for (qsizetype index = 0; index < thrownAway(); ++index) {
            photos.at(index)->removeFrom(all);
        }
        ASSERT_TRUE(opened.value()->close().ok());
        open(library());
        ASSERT_EQ(m_session.contents().trash.size(), thrownAway());
    }

    /// What is asked before the trash is emptied; answered by the button of that role.
    QString askedToEmpty(QMessageBox::ButtonRole role)
    {
        QString asked;
        whenModal([&asked, role](QWidget& dialog) {
            auto& box = static_cast<QMessageBox&>(dialog);
            asked = box.text() + u'\n' + box.informativeText();
            for (QAbstractButton* const button : box.buttons()) {
                if (box.buttonRole(button) == role) {
                    button->click();
                }
            }
        });
        m_window.actions().emptyTrash->trigger();
        EXPECT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
        return asked;
    }
};

TEST_F(TrashDialogsTest, theTrashIsEmptiedOnlyWhenThatIsConfirmed)
{
    const qint64 bytes = m_session.contents().trash.first().bytes;
    const QString asked = askedToEmpty(QMessageBox::RejectRole);
    EXPECT_TRUE(asked.startsWith(u"Delete 1 photo for good?"_s)) << asked.toStdString();
    EXPECT_TRUE(asked.contains(PhotoTexts::size(bytes)));
    EXPECT_TRUE(asked.contains(u"have a copy of the whole library on another disk first"_s));
    EXPECT_EQ(m_session.contents().trash.size(), 1);
    static_cast<void>(askedToEmpty(QMessageBox::DestructiveRole));
    EXPECT_EQ(m_session.contents().trash.size(), 0);
    EXPECT_TRUE(
        m_window.statusBar()->currentMessage().startsWith(u"1 photo was deleted for good; "_s));
}

TEST_F(TrashDialogsTest, whatComesIntoTheTrashWhileItIsAskedStaysThere)
{
    const qint64 listed = m_session.contents().trash.first().id;
    whenModal([this](QWidget& dialog) {
        const auto connection = Connection::open(library(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        connection.value()->database().exec("UPDATE RKVersion SET isInTrash=1");
        auto& box = static_cast<QMessageBox&>(dialog);
        for (QAbstractButton* const button : box.buttons()) {
            if (box.buttonRole(button) == QMessageBox::DestructiveRole) {
                button->click();
            }
        }
    });
    m_window.actions().emptyTrash->trigger();
    EXPECT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    const QList<PhotoFacts> left = m_session.contents().trash;
    EXPECT_FALSE(left.isEmpty());
    for (const PhotoFacts& photo : left) {
        EXPECT_NE(photo.id, listed);
    }
}

TEST_F(TrashDialogsTest, withNothingSelectedAllPhotosArePutBack)
{
    m_window.actions().showTrash->trigger();
    ASSERT_TRUE(m_window.actions().putBack->isEnabled());
    EXPECT_EQ(m_window.actions().putBack->text(), u"&Put All Back"_s);
    m_window.actions().putBack->trigger();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(m_session.contents().trash.isEmpty());
    EXPECT_EQ(m_window.statusBar()->currentMessage(), u"1 photo was put back."_s);
}

class SeveralInTheTrash : public TrashDialogsTest
{
protected:
    [[nodiscard]] qsizetype thrownAway() const override { return 2; }
};

TEST_F(SeveralInTheTrash, areDeletedWithTheirNumberAndSizeTold)
{
    static_cast<void>(askedToEmpty(QMessageBox::DestructiveRole));
    const QString told = m_window.statusBar()->currentMessage();
    EXPECT_TRUE(told.startsWith(u"2 photos were deleted for good; "_s)) << told.toStdString();
    EXPECT_TRUE(told.endsWith(u"B are free again."_s)) << told.toStdString();
}
