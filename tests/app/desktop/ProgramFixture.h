#pragma once

#include "DesktopProgram.h"
#include "LibraryActions.h"
#include "LibraryCopyFixture.h"
#include "PhotoGrid.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>
#include <utility>

/// The whole program in this process, over a copy of a small sample library. Widgets are found by
/// their names and clicked.
class ProgramFixture : public LibraryCopyFixture
{
protected:
    void SetUp() override
    {
        LibraryCopyFixture::SetUp();
        makeProgram();
    }

    void makeProgram()
    {
        m_program =
            std::make_unique<DesktopProgram>(m_folder.filePath(QStringLiteral("settings.plist")));
    }

    /// Starts the program with the library and waits until it is there.
    void open()
    {
        m_program->start(library());
        m_program->corvaneWindow().show();
        ASSERT_TRUE(waitUntil([this] { return m_program->session().isOpen() && isIdle(); }));
    }

    [[nodiscard]] bool isIdle() { return !m_program->session().isBusy(); }

    [[nodiscard]] PhotoGrid& grid()
    {
        return *m_program->libraryWindow().findChild<PhotoGrid*>(QStringLiteral("photoGrid"));
    }

    template <typename Widget = QWidget>
    [[nodiscard]] Widget& control(const char* name)
    {
        auto* const found =
            m_program->corvaneWindow().findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return *found;
    }

    void click(const char* name) { control<QAbstractButton>(name).click(); }

    [[nodiscard]] LibraryActions& actions() { return m_program->libraryWindow().actions(); }

    void selectRawPhotos()
    {
        actions().selectRaw->trigger();
        ASSERT_TRUE(waitUntil(
            [this] { return control<QLabel>("selectedLabel").text() == QStringLiteral("2"); }));
    }

    /// Presses the scan button and waits for the end and for the windows to follow.
    void scan()
    {
        click("selectionScanButton");
        ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning(); }));
        ASSERT_TRUE(waitUntil([this] { return isIdle(); }));
    }

    /// As soon as a scan has finished its first photo, does something while its thread waits before
    /// the second.
    void betweenTwoPhotos(std::function<void()> action)
    {
        auto* const first = new QObject(m_program.get());
        CorvaneAppDelegate* const controller = &m_program->controller();
        QObject::connect(controller, &CorvaneAppDelegate::photoDone, first, [first] {
            first->setProperty("isDone", true);
        });
        const auto act = [first, action = std::move(action)] {
            if (first->property("isDone").toBool()) {
                first->setProperty("isDone", false);
                action();
            }
        };
        QObject::connect(controller, &CorvaneAppDelegate::timeRemainingChanged, [first, act] {
            if (QThread::currentThread() != first->thread()) {
                QMetaObject::invokeMethod(first, act, Qt::BlockingQueuedConnection);
            }
        });
    }

    /// Titles of the alerts that are up.
    [[nodiscard]] static QStringList alerts()
    {
        QStringList titles;
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (const QWidget* const window : windows) {
            const auto* const box = qobject_cast<const QMessageBox*>(window);
            if (box != nullptr && box->isVisible()) {
                titles.append(box->text());
            }
        }
        return titles;
    }

    /// Clicks the button of that text.
    static void pressIn(const QWidget& dialog, const QString& buttonText)
    {
        const auto buttons = dialog.findChildren<QAbstractButton*>();
        for (QAbstractButton* const button : buttons) {
            if (button->text().remove(u'&') == buttonText) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << "no button " << buttonText.toStdString();
    }

    /// Answers the next question that is up with that name by a button of that text.
    static void answerSoon(const QString& question, const QString& buttonText)
    {
        auto* const timer = new QTimer(qApp);
        timer->setInterval(10);
        QObject::connect(timer, &QTimer::timeout, [timer, question, buttonText] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (dialog == nullptr || dialog->objectName() != question) {
                return;
            }
            timer->stop();
            timer->deleteLater();
            pressIn(*dialog, buttonText);
        });
        timer->start();
    }

    /// What the library on disk holds once the program is gone.
    [[nodiscard]] LibraryContents afterwards()
    {
        m_program.reset();
        LibraryContents contents;
        auto opened = PhotoLibrary::open(library(), {.access = Access::Read, .afterCrash = false});
        EXPECT_TRUE(opened.ok());
        if (opened.ok()) {
            contents.photos = opened.value()->photos().value();
            contents.trash = opened.value()->trashedPhotos().value();
            const LibrarySummary summary = opened.value()->summary().value();
            EXPECT_EQ(summary.problems, QStringList());
        }
        return contents;
    }

    [[nodiscard]] static QList<PhotoFacts> copiesIn(const LibraryContents& contents)
    {
        QList<PhotoFacts> copies;
        for (const PhotoFacts& photo : contents.photos) {
            if (photo.keywords.contains(QStringLiteral("Corvane Processed")) &&
                !photo.keywords.contains(QStringLiteral("Corvane Original"))) {
                copies.append(photo);
            }
        }
        return copies;
    }

    std::unique_ptr<DesktopProgram> m_program;
};
