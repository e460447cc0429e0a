#include "LibraryOpenPanel.h"

#include "LibraryFinder.h"
#include "PathText.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

using namespace Qt::StringLiterals;

LibraryOpenPanel::LibraryOpenPanel(const OpenPanel& request, QWidget* parent)
    : QFileDialog(parent)
    , m_request(request)
{
    setObjectName(u"openPanel"_s);
    setOption(QFileDialog::DontUseNativeDialog);
    setWindowTitle(request.title);
    // Of all modes the one in which folders are chosen and files can be seen.
    setFileMode(QFileDialog::Directory);
    setOption(QFileDialog::ShowDirsOnly, !request.canChooseFiles);
    setLabelText(QFileDialog::Accept, tr("&Open"));
    setLabelText(QFileDialog::FileName, tr("Name:"));
    addMessage();
    showChoosableFiles();
    startIn(request.directory);
    connect(this, &QFileDialog::directoryEntered, this, &LibraryOpenPanel::refuseToEnter);
    if (const auto* const name = findChild<QLineEdit*>(u"fileNameEdit"_s)) {
        connect(name, &QLineEdit::textChanged, this, &LibraryOpenPanel::updateOpenButton);
    }
    updateOpenButton();
}

std::optional<QString> LibraryOpenPanel::choose(QWidget* parent, const QString& start)
{
    OpenPanel request;
    request.title = tr("Open Library");
    request.message = tr("Select an iPhoto library.");
    request.directory = start;
    request.allowedFileTypes = {u"photolibrary"_s};
    LibraryOpenPanel panel(request, parent);
    return panel.exec() == QDialog::Accepted ? std::make_optional(panel.chosenPath())
                                             : std::nullopt;
}

void LibraryOpenPanel::accept()
{
    const QStringList items = selectedFiles();
    if (!items.isEmpty()) {
        take(items.first());
    }
}

void LibraryOpenPanel::addMessage()
{
    auto* const message = new QLabel(m_request.message, this);
    message->setObjectName(u"openPanelMessage"_s);
    message->setTextFormat(Qt::PlainText);
    message->setWordWrap(true);
    const int side = style()->pixelMetric(QStyle::PM_LayoutLeftMargin, nullptr, this);
    message->setContentsMargins(side, side, side, 0);
    // The place above everything else of a layout that is not ours.
    layout()->setMenuBar(message);
}

void LibraryOpenPanel::showChoosableFiles()
{
    QStringList patterns;
    for (const QString& type : m_request.allowedFileTypes) {
        if (!type.isEmpty()) {
            patterns += u"*."_s + type;
        }
    }
    setNameFilters({patterns.isEmpty() ? u"*"_s : patterns.join(u' ')});
    // There is nothing to pick from.
    for (const QString& name : {u"fileTypeLabel"_s, u"fileTypeCombo"_s}) {
        if (auto* const widget = findChild<QWidget*>(name)) {
            widget->hide();
        }
    }
}

void LibraryOpenPanel::startIn(const QString& directory)
{
    QDir folder(QDir::cleanPath(directory));
    const bool isInLibrary = isPackage(folder.path());
    while (!folder.exists() && !folder.isRoot() && folder.path() != "."_L1) {
        folder.setPath(QFileInfo(folder.path()).path());
    }
    if (!isInLibrary) {
        setDirectory(folder);
        return;
    }
    setDirectory(QFileInfo(folder.path()).path());
    selectFile(folder.path());
}

void LibraryOpenPanel::take(const QString& path)
{
    if (mayChoose(path)) {
        m_chosenPath = QDir::cleanPath(path);
        done(QDialog::Accepted);
    } else if (QFileInfo(path).isDir()) {
        setDirectory(path);
        selectFile(QString());
    }
}

void LibraryOpenPanel::refuseToEnter(const QString& directory)
{
    if (!isPackage(directory)) {
        return;
    }
    setDirectory(QFileInfo(directory).path());
    take(directory);
}

void LibraryOpenPanel::updateOpenButton()
{
    const auto* const buttons = findChild<QDialogButtonBox*>(u"buttonBox"_s);
    const QStringList items = selectedFiles();
    if (buttons == nullptr || items.isEmpty()) {
        return;
    }
    const QString& path = items.first();
    const bool isElsewhere = QFileInfo(path).isDir() && QDir(path) != directory();
    for (QAbstractButton* const button : buttons->buttons()) {
        if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole) {
            button->setEnabled(mayChoose(path) || isElsewhere);
        }
    }
}

bool LibraryOpenPanel::isPackage(const QString& path) const
{
    const QString extension = PathText::extension(QDir::cleanPath(path));
    const bool isOfType = !extension.isEmpty() &&
                          m_request.allowedFileTypes.contains(extension, Qt::CaseInsensitive) &&
                          QFileInfo(path).isDir();
    return isOfType || LibraryFinder::looksLikeLibrary(path);
}

bool LibraryOpenPanel::mayChoose(const QString& path) const
{
    const QFileInfo item(path);
    if (isPackage(path)) {
        // Of any name: a library renamed by hand is one all the same.
        return m_request.canChooseFiles || m_request.canChooseDirectories;
    }
    if (item.isDir()) {
        return m_request.canChooseDirectories;
    }
    return m_request.canChooseFiles && item.exists() &&
           (m_request.allowedFileTypes.isEmpty() ||
            m_request.allowedFileTypes.contains(PathText::extension(path), Qt::CaseInsensitive));
}
