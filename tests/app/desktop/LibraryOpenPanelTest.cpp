#include "LibraryOpenPanel.h"

#include "LibraryFinder.h"
#include "Mnemonics.h"
#include "WhenModal.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class LibraryOpenPanelTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QDir folder(m_folder.path());
        ASSERT_TRUE(folder.mkpath(u"Named.photolibrary/Inside"_s));
        ASSERT_TRUE(folder.mkpath(u"By Content/Database/apdb"_s));
        ASSERT_TRUE(folder.mkpath(u"Plain/Deeper"_s));
        touch(u"By Content/Database/apdb/Library.apdb"_s);
        touch(u"a.jpg"_s);
        m_libraries.title = u"Pick"_s;
        m_libraries.message = u"Select <it>."_s;
        m_libraries.directory = m_folder.path();
        m_libraries.allowedFileTypes = {u"aplibrary"_s, u"photolibrary"_s, QString()};
        m_anything.directory = m_folder.path();
        m_anything.canChooseDirectories = true;
    }

    void touch(const QString& name) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    void show(const OpenPanel& request)
    {
        m_panel = std::make_unique<LibraryOpenPanel>(request, nullptr);
        m_panel->show();
    }

    QPushButton& open()
    {
        return *m_panel->findChild<QDialogButtonBox*>(u"buttonBox"_s)
                    ->button(QDialogButtonBox::Open);
    }

    void type(const QString& text)
    {
        m_panel->findChild<QLineEdit*>(u"fileNameEdit"_s)->setText(text);
    }

    /// The item in the list, once it is there.
    QModelIndex item(QTreeView& view, const QString& name)
    {
        QModelIndex found;
        const bool isThere = QTest::qWaitFor([&] {
            for (int row = 0; row < view.model()->rowCount(view.rootIndex()); ++row) {
                const QModelIndex index = view.model()->index(row, 0, view.rootIndex());
                if (index.data().toString() == name && view.visualRect(index).isValid()) {
                    found = index;
                }
            }
            return found.isValid();
        });
        EXPECT_TRUE(isThere) << qPrintable(name);
        return found;
    }

    void doubleClick(const QString& name)
    {
        auto& view = *m_panel->findChild<QTreeView*>(u"treeView"_s);
        const QPoint place = view.visualRect(item(view, name)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    QTemporaryDir m_folder;
    OpenPanel m_libraries; ///< files, but no folders
    OpenPanel m_anything;  ///< files and folders
    std::unique_ptr<LibraryOpenPanel> m_panel;
};

TEST_F(LibraryOpenPanelTest, saysWhatItWants)
{
    show(m_libraries);
    EXPECT_EQ(m_panel->windowTitle(), u"Pick"_s);
    const auto* const message = m_panel->findChild<QLabel*>(u"openPanelMessage"_s);
    EXPECT_EQ(message->text(), u"Select <it>."_s);
    EXPECT_EQ(message->textFormat(), Qt::PlainText);
    EXPECT_TRUE(message->isVisible());
    EXPECT_EQ(open().text(), u"&Open"_s);
    EXPECT_EQ(m_panel->directory(), QDir(m_folder.path()));
    EXPECT_FALSE(open().isEnabled()) << "nothing is selected";
}

TEST_F(LibraryOpenPanelTest, noTwoControlsShareAMnemonic)
{
    show(m_libraries);
    QStringList letters = mnemonicsOf(*m_panel);
    EXPECT_TRUE(letters.contains(u"o"_s)) << "the button that opens";
    EXPECT_EQ(letters.removeDuplicates(), 0) << letters.join(u' ').toStdString();
}

TEST_F(LibraryOpenPanelTest, aLibraryIsKnownByNameOrContent)
{
    EXPECT_TRUE(LibraryFinder::looksLikeLibrary(path(u"Named.photolibrary"_s)));
    EXPECT_TRUE(LibraryFinder::looksLikeLibrary(path(u"Named.photolibrary/"_s)));
    EXPECT_TRUE(LibraryFinder::looksLikeLibrary(path(u"By Content"_s)));
    EXPECT_FALSE(LibraryFinder::looksLikeLibrary(path(u"Plain"_s)));
    EXPECT_FALSE(LibraryFinder::looksLikeLibrary(path(u"a.jpg"_s)));
    EXPECT_FALSE(LibraryFinder::looksLikeLibrary(path(u"none.photolibrary"_s)));
}

TEST_F(LibraryOpenPanelTest, aLibraryIsChosenAsOneThing)
{
    for (const QString& name : {u"Named.photolibrary"_s, u"By Content"_s}) {
        show(m_libraries);
        type(name);
        EXPECT_TRUE(open().isEnabled());
        QTest::mouseClick(&open(), Qt::LeftButton);
        EXPECT_EQ(m_panel->result(), QDialog::Accepted);
        EXPECT_EQ(m_panel->chosenPath(), path(name));
    }
}

TEST_F(LibraryOpenPanelTest, aDoubleClickChoosesALibraryAndEntersAFolder)
{
    show(m_libraries);
    doubleClick(u"Plain"_s);
    EXPECT_TRUE(m_panel->isVisible());
    EXPECT_EQ(m_panel->directory(), QDir(path(u"Plain"_s)));
    EXPECT_TRUE(m_panel->chosenPath().isEmpty());
    show(m_libraries);
    doubleClick(u"Named.photolibrary"_s);
    EXPECT_FALSE(m_panel->isVisible());
    EXPECT_EQ(m_panel->chosenPath(), path(u"Named.photolibrary"_s));
    EXPECT_EQ(m_panel->result(), QDialog::Accepted);
}

TEST_F(LibraryOpenPanelTest, aClickedLibraryIsOpenedByTheButton)
{
    show(m_libraries);
    auto& view = *m_panel->findChild<QTreeView*>(u"treeView"_s);
    QTest::mouseClick(view.viewport(),
                      Qt::LeftButton,
                      Qt::NoModifier,
                      view.visualRect(item(view, u"By Content"_s)).center());
    EXPECT_TRUE(open().isEnabled());
    QTest::mouseClick(&open(), Qt::LeftButton);
    EXPECT_EQ(m_panel->chosenPath(), path(u"By Content"_s));
}

TEST_F(LibraryOpenPanelTest, aFolderIsEnteredWhereFoldersMayNotBeChosen)
{
    show(m_libraries);
    type(u"Plain"_s);
    EXPECT_TRUE(open().isEnabled());
    QTest::mouseClick(&open(), Qt::LeftButton);
    EXPECT_TRUE(m_panel->isVisible());
    EXPECT_EQ(m_panel->directory(), QDir(path(u"Plain"_s)));
    EXPECT_FALSE(open().isEnabled());
}

TEST_F(LibraryOpenPanelTest, filesOfOtherTypesAreNotChosen)
{
    show(m_libraries);
    type(u"a.jpg"_s);
    EXPECT_FALSE(open().isEnabled());
    m_panel->accept();
    EXPECT_TRUE(m_panel->isVisible());
    type(u"none"_s);
    m_panel->accept();
    EXPECT_TRUE(m_panel->isVisible());
}

TEST_F(LibraryOpenPanelTest, filesAndFoldersMayBothBeChosen)
{
    for (const QString& name : {u"a.jpg"_s, u"Plain"_s, u"Named.photolibrary"_s}) {
        show(m_anything);
        type(name);
        EXPECT_TRUE(open().isEnabled()) << qPrintable(name);
        QTest::mouseClick(&open(), Qt::LeftButton);
        EXPECT_EQ(m_panel->chosenPath(), path(name));
    }
    show(m_anything);
    EXPECT_TRUE(open().isEnabled()) << "the folder that is shown";
    QTest::mouseClick(&open(), Qt::LeftButton);
    EXPECT_EQ(m_panel->chosenPath(), m_folder.path());
}

TEST_F(LibraryOpenPanelTest, startsBesideALibraryAndAboveWhatIsNotThere)
{
    m_libraries.directory = path(u"Named.photolibrary"_s);
    show(m_libraries);
    EXPECT_EQ(m_panel->directory(), QDir(m_folder.path()));
    EXPECT_TRUE(open().isEnabled());
    m_libraries.directory = path(u"Plain/Gone/Away"_s);
    show(m_libraries);
    EXPECT_EQ(m_panel->directory(), QDir(path(u"Plain"_s)));
}

TEST_F(LibraryOpenPanelTest, choosingWaitsForTheAnswer)
{
    whenModal([](QWidget& panel) { dynamic_cast<QFileDialog&>(panel).reject(); });
    EXPECT_EQ(LibraryOpenPanel::choose(nullptr, m_folder.path()), std::nullopt);
    whenModal([](QWidget& panel) {
        panel.findChild<QLineEdit*>(u"fileNameEdit"_s)->setText(u"By Content"_s);
        QMetaObject::invokeMethod(&panel, "accept");
    });
    EXPECT_EQ(LibraryOpenPanel::choose(nullptr, m_folder.path()), path(u"By Content"_s));
}

} // namespace
