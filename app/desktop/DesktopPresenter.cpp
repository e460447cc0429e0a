#include "DesktopPresenter.h"

#include "CorvaneWindow.h"
#include "FixedSizeSheet.h"
#include "LibraryOpenPanel.h"
#include "Scripting.h"

#include <QLabel>
#include <QMessageBox>

using namespace Qt::StringLiterals;

void DesktopPresenter::setWindow(CorvaneWindow* window)
{
    m_window = window;
}

void DesktopPresenter::stop()
{
    m_stopped = true;
    const QList<QPointer<QDialog>> shown = m_shown;
    for (const QPointer<QDialog>& dialog : shown) {
        if (dialog) {
            dialog->reject();
        }
    }
}

void DesktopPresenter::beginSheet(const Alert& alert)
{
    if (m_stopped) {
        return;
    }
    QMessageBox* const box = makeAlert(alert);
    box->setAttribute(Qt::WA_DeleteOnClose);
    m_shown.removeAll(nullptr);
    m_shown.append(box);
    box->open();
}

void DesktopPresenter::runModal(const Alert& alert)
{
    if (!m_stopped) {
        const QPointer<QMessageBox> box(makeAlert(alert));
        runDialog(*box);
        if (box) {
            box->deleteLater();
        }
    }
    if (m_stopped) {
        throw ScriptingException(u"AlertNotAnswered"_s,
                                 tr("The program was closed before the question was answered."));
    }
}

OpenPanelResult DesktopPresenter::runModal(const OpenPanel& panel)
{
    OpenPanelResult result;
    if (!m_stopped) {
        LibraryOpenPanel dialog(panel, m_window);
        if (runDialog(dialog) == QDialog::Accepted) {
            result = {.code = kPanelOk, .paths = {dialog.chosenPath()}};
        }
    }
    // Who waits for access must not be kept waiting.
    return m_stopped ? OpenPanelResult{.code = kPanelOk, .paths = {}} : result;
}

void DesktopPresenter::beginFixedSizeSheet()
{
    if (m_window) {
        m_window->fixedSizeSheet().begin();
    }
}

void DesktopPresenter::endFixedSizeSheet()
{
    if (m_window) {
        m_window->fixedSizeSheet().end();
    }
}

void DesktopPresenter::commitEditing(Field /*field*/)
{
    // Both fields are in one window, so ending editing there is the same for either.
    if (m_window) {
        m_window->fixedSizeSheet().commitEditing();
    }
}

QMessageBox* DesktopPresenter::makeAlert(const Alert& alert) const
{
    auto* const box = new QMessageBox(QMessageBox::Warning,
                                      tr("Corvane For iPhoto"),
                                      alert.messageText,
                                      QMessageBox::Ok,
                                      m_window);
    box->setObjectName(u"alert"_s);
    box->setInformativeText(alert.informativeText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    // Names of photos and reasons of errors are no markup.
    const QList<QLabel*> labels = box->findChildren<QLabel*>();
    for (QLabel* const label : labels) {
        label->setTextFormat(Qt::PlainText);
        if (label->text() == alert.messageText) {
            QFont font = label->font();
            font.setBold(true);
            label->setFont(font);
        }
    }
    return box;
}

int DesktopPresenter::runDialog(QDialog& dialog)
{
    m_shown.removeAll(nullptr);
    m_shown.append(&dialog);
    dialog.setWindowModality(Qt::ApplicationModal);
    return dialog.exec();
}
