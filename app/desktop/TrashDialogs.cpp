#include "TrashDialogs.h"

#include "LibraryActions.h"
#include "LibrarySession.h"
#include "LibraryView.h"
#include "PhotoGrid.h"
#include "PhotoTexts.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

TrashDialogs::TrashDialogs(LibrarySession& session,
                           const LibraryActions& actions,
                           LibraryView& view,
                           QWidget& window)
    : m_session(session)
    , m_actions(actions)
    , m_view(view)
    , m_window(window)
{
    connect(m_actions.putBack, &QAction::triggered, this, &TrashDialogs::putBack);
    connect(m_actions.emptyTrash, &QAction::triggered, this, &TrashDialogs::askToEmpty);
    connect(&m_session, &LibrarySession::restored, this, [this](int photos) {
        emit said(photos == 1 ? tr("1 photo was put back.")
                              : tr("%1 photos were put back.").arg(photos));
    });
    connect(
        &m_session, &LibrarySession::trashEmptied, this, [this](qsizetype photos, qint64 bytes) {
            const QString size = PhotoTexts::size(bytes);
            emit said(photos == 1 ? tr("1 photo was deleted for good; %1 are free again.").arg(size)
                                  : tr("%1 photos were deleted for good; %2 are free again.")
                                        .arg(QString::number(photos), size));
        });
}

void TrashDialogs::putBack()
{
    QList<qint64> ids = m_view.grid().selectedPhotos();
    if (ids.isEmpty()) {
        for (const PhotoFacts& photo : m_session.contents().trash) {
            ids.append(photo.id);
        }
    }
    m_session.restoreFromTrash(ids);
}

void TrashDialogs::askToEmpty()
{
    QList<qint64> ids;
    qint64 bytes = 0;
    for (const PhotoFacts& photo : m_session.contents().trash) {
        ids.append(photo.id);
        bytes += photo.bytes;
    }
    QMessageBox box(QMessageBox::Warning,
                    m_window.windowTitle(),
                    ids.size() == 1 ? tr("Delete 1 photo for good?")
                                    : tr("Delete %1 photos for good?").arg(ids.size()),
                    QMessageBox::Cancel,
                    &m_window);
    box.setObjectName(u"emptyTrashQuestion"_s);
    box.setInformativeText(tr("Their files are deleted from the disk, which frees about %1. This "
                              "cannot be undone, and the library's own backups hold no photos: "
                              "have a copy of the whole library on another disk first.")
                               .arg(PhotoTexts::size(bytes)));
    const QPushButton* const confirm = box.addButton(tr("&Delete"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    // While it was asked a scan may have begun.
    if (box.clickedButton() == confirm && m_actions.emptyTrash->isEnabled()) {
        m_session.emptyTrash(ids);
    }
}
