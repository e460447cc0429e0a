#include "ZTBCrashReporterWindow.h"

#include "Button.h"
#include "CommentsView.h"
#include "CrashLogView.h"
#include "CrashReportContents.h"
#include "SwitchRow.h"
#include "ZTBCrashReporterWindowController.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

ZTBCrashReporterWindow::ZTBCrashReporterWindow(ZTBCrashReporterWindowController& owner,
                                               UserDefaults& defaults)
    : m_controller(&owner)
{
    setObjectName(u"ZTBCrashReporterWindow"_s);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(makeHeading());
    addLog(layout);
    addComments(layout);
    addChoices(layout, defaults);
    layout->addLayout(makeButtons());
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
    const QSize room = screen()->availableSize();
    const QSize wanted(fontMetrics().averageCharWidth() * 95, fontMetrics().lineSpacing() * 34);
    resize(wanted.boundedTo(room).expandedTo(minimumSizeHint()));
}

ZTBCrashReporterWindow::~ZTBCrashReporterWindow() = default;

void ZTBCrashReporterWindow::end()
{
    if (m_controller != nullptr) {
        m_controller->windowWillClose();
    }
}

void ZTBCrashReporterWindow::setTitle(const QString& title)
{
    setWindowTitle(title);
}

void ZTBCrashReporterWindow::center()
{
    QRect place = frameGeometry();
    place.moveCenter(screen()->availableGeometry().center());
    move(place.topLeft());
}

void ZTBCrashReporterWindow::showWindow()
{
    show();
    raise();
    activateWindow();
}

void ZTBCrashReporterWindow::orderOut()
{
    hide();
}

void ZTBCrashReporterWindow::selectNextKeyView()
{
    focusNextChild();
}

void ZTBCrashReporterWindow::selectPreviousKeyView()
{
    focusPreviousChild();
}

void ZTBCrashReporterWindow::beginSheet(const CrashReportSheet& sheet,
                                        std::function<void(int returnCode)> didEnd)
{
    const bool isSuccess = sheet.kind == CrashReportSheet::Kind::Success;
    auto* const box = new QMessageBox(isSuccess ? QMessageBox::Information : QMessageBox::Warning,
                                      windowTitle(),
                                      sheet.title,
                                      QMessageBox::Ok,
                                      this);
    box->setObjectName(u"submissionSheet"_s);
    box->setInformativeText(sheet.message);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->setAttribute(Qt::WA_DeleteOnClose);
    // What a server or the network says is no markup.
    const QList<QLabel*> labels = box->findChildren<QLabel*>();
    for (QLabel* const label : labels) {
        label->setTextFormat(Qt::PlainText);
    }
    connect(box, &QDialog::finished, this, [this, didEnd = std::move(didEnd)](int returnCode) {
        if (m_controller != nullptr) {
            didEnd(returnCode);
        }
    });
    box->open();
}

void ZTBCrashReporterWindow::release()
{
    m_controller = nullptr;
    hide();
    deleteLater();
}

void ZTBCrashReporterWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    end();
}

QWidget* ZTBCrashReporterWindow::makeHeading()
{
    auto* const heading = new QLabel(
        tr("%1 has crashed and left the log below. Nothing has been sent. You can report it to "
           "those who look after the program, ignore it, so that it is offered again the next "
           "time, or discard it, which moves it to the trash.")
            .arg(m_controller->applicationName()),
        this);
    heading->setObjectName(u"crashHeading"_s);
    heading->setTextFormat(Qt::PlainText);
    heading->setWordWrap(true);
    return heading;
}

void ZTBCrashReporterWindow::addLog(QBoxLayout* layout)
{
    auto* const log = new CrashLogView(m_controller->crashLogPath(), this);
    log->setObjectName(u"crashLog"_s);
    layout->addWidget(log, 3);
}

void ZTBCrashReporterWindow::addComments(QBoxLayout* layout)
{
    auto* const comments = new CommentsView(*m_controller, this);
    auto* const label = new QLabel(tr("&Comments"), this);
    label->setBuddy(comments);
    comments->setFocus();
    layout->addWidget(label);
    layout->addWidget(comments, 1);
}

void ZTBCrashReporterWindow::addChoices(QBoxLayout* layout, UserDefaults& defaults)
{
    auto* const address = new QLineEdit(m_controller->emailAddress(), this);
    address->setObjectName(u"emailAddress"_s);
    address->setAccessibleName(tr("E-mail address"));
    address->setPlaceholderText(tr("None"));
    connect(m_controller,
            &ZTBCrashReporterWindowController::emailAddressChanged,
            address,
            [address](const QString& text) {
                if (text != address->text()) {
                    address->setText(text);
                }
            });
    connect(address, &QLineEdit::textEdited, m_controller, [this](const QString& text) {
        // A window that is hidden makes its input method commit what is being composed.
        if (m_controller != nullptr) {
            m_controller->setEmailAddress(text.isEmpty() ? QString() : text);
        }
    });
    auto* const form = new QFormLayout;
    form->addRow(tr("&E-mail address:"), address);
    layout->addLayout(form);
    layout->addWidget(
        new SwitchRow(defaults,
                      u"ZTBCrashReporterIncludeEmailAddress"_s,
                      {tr("Include the e-mail &address"),
                       tr("Adds the address above, so that you can be asked about the crash.")},
                      this));
    layout->addWidget(new SwitchRow(
        defaults,
        u"ZTBCrashReporterIncludeAnonymousSystemInformation"_s,
        {tr("Include &system information"),
         tr("Adds the machine's model, memory and processors, and the version of its system.")},
        this));
}

QLayout* ZTBCrashReporterWindow::makeButtons()
{
    using Controller = ZTBCrashReporterWindowController;
    Controller* const controller = m_controller;
    auto* const row = new QHBoxLayout;
    connect(addButton(row, u"showReportContents"_s, tr("Show &What Will Be Sent…")),
            &QPushButton::clicked,
            this,
            &ZTBCrashReporterWindow::showContents);
    auto* const progress = new QProgressBar(this);
    progress->setObjectName(u"progressIndicator"_s);
    progress->setAccessibleName(tr("Sending"));
    progress->setRange(0, 0);
    progress->setTextVisible(false);
    progress->setVisible(controller->progressIndicator().isAnimating());
    connect(&controller->progressIndicator(),
            &ProgressIndicator::animatingChanged,
            progress,
            &QWidget::setVisible);
    row->addWidget(progress, 1);
    row->addStretch(1);

    addOutlet(row, u"discardButton"_s, tr("&Discard"), controller->discardButton(), [controller] {
        controller->discardReport(nullptr);
    });
    addOutlet(row, u"ignoreButton"_s, tr("&Ignore"), controller->ignoreButton(), [controller] {
        controller->ignoreReport(nullptr);
    });
    addOutlet(row, u"reportButton"_s, tr("&Report"), controller->reportButton(), [controller] {
        controller->sendReport(nullptr);
    });
    return row;
}

QPushButton*
ZTBCrashReporterWindow::addButton(QBoxLayout* layout, const QString& name, const QString& title)
{
    auto* const button = new QPushButton(title, this);
    button->setObjectName(name);
    button->setAccessibleName(QString(title).remove(u'&'));
    layout->addWidget(button);
    return button;
}

void ZTBCrashReporterWindow::addOutlet(QBoxLayout* layout,
                                       const QString& name,
                                       const QString& title,
                                       const Button& state,
                                       std::function<void()> action)
{
    QPushButton* const button = addButton(layout, name, title);
    button->setEnabled(state.isEnabled());
    connect(&state, &Button::enabledChanged, button, &QWidget::setEnabled);
    connect(button, &QPushButton::clicked, m_controller, std::move(action));
}

void ZTBCrashReporterWindow::showContents()
{
    if (m_controller == nullptr) {
        return;
    }
    auto* const contents =
        new CrashReportContents(m_controller->formValues(), m_controller->submissionURL(), this);
    contents->setAttribute(Qt::WA_DeleteOnClose);
    contents->open();
}
