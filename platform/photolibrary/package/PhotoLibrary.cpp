#include "PhotoLibrary.h"

#include "DatabaseRevision.h"
#include "LibraryOpening.h"
#include "LibraryReader.h"
#include "LibraryRepair.h"
#include "LibraryVerification.h"
#include "OpeningChecks.h"
#include "PackageApplication.h"
#include "PackageTurn.h"
#include "PhotoLibraryPrivate.h"
#include "SystemLog.h"
#include "TrashRows.h"

using namespace Qt::StringLiterals;

Result<std::unique_ptr<PhotoLibrary>> PhotoLibrary::open(const QString& path,
                                                         const OpenOptions& options)
{
    Result<std::shared_ptr<PhotoLibraryPrivate>> opened = LibraryOpening::open(path, options);
    if (!opened.ok()) {
        return opened.error();
    }
    return std::unique_ptr<PhotoLibrary>(new PhotoLibrary(std::move(opened).value()));
}

PhotoLibrary::PhotoLibrary(std::shared_ptr<PhotoLibraryPrivate> d)
    : m_d(std::move(d))
{
}

PhotoLibrary::~PhotoLibrary()
{
    if (const Result<void> closed = m_d->close(); !closed.ok()) {
        systemLog(closed.error().message);
    }
}

PhotoApplicationPtr PhotoLibrary::applicationWithBundleIdentifier(const QString& identifier)
{
    return std::make_shared<PackageApplication>(m_d, identifier == "com.apple.iPhoto"_L1);
}

std::unique_ptr<PhotoTurn> PhotoLibrary::beginPhotoTurn()
{
    return m_d->beginTurn();
}

void PhotoLibrary::setSelection(const QList<qint64>& photoIds)
{
    m_d->setSelection(photoIds);
}

void PhotoLibrary::requestStop()
{
    m_d->requestStop();
}

QString PhotoLibrary::path() const
{
    return m_d->path();
}

QString PhotoLibrary::version() const
{
    return m_d->version();
}

QStringList PhotoLibrary::warnings() const
{
    return m_d->warnings();
}

bool PhotoLibrary::wasChangedByOthers() const
{
    return m_d->wasChangedByOthers();
}

Result<QList<PhotoFacts>> PhotoLibrary::photos()
{
    return m_d->tryRead([](Connection& connection) { return LibraryReader::photos(connection); });
}

Result<QList<PhotoFacts>> PhotoLibrary::trashedPhotos()
{
    return m_d->tryRead(
        [](Connection& connection) { return LibraryReader::trashedPhotos(connection); });
}

Result<QList<qint64>> PhotoLibrary::revision()
{
    return m_d->tryRead([](Connection& connection) { return DatabaseRevision::of(connection); });
}

Result<LibrarySummary> PhotoLibrary::summary(const std::function<bool()>& shouldStop)
{
    const NamedFiles named = m_d->journaledFiles();
    return m_d->tryRead([&](Connection& connection) {
        const Connection::Interruptible interruptible(connection, shouldStop);
        return LibraryReader::summary(connection, named);
    });
}

Result<QList<Finding>> PhotoLibrary::verify(const std::function<bool()>& shouldStop,
                                            const CareProgress::Tell& tell)
{
    return m_d->tryRead([&](Connection& connection) {
        return LibraryVerification::findings(connection, m_d->journaledFiles(), shouldStop, tell);
    });
}

Result<RepairReport> PhotoLibrary::repair(const std::function<bool()>& shouldStop,
                                          const CareProgress::Tell& tell)
{
    return LibraryRepair::run(*m_d, shouldStop, tell);
}

Result<QString> PhotoLibrary::backUp()
{
    return m_d->backUp();
}

Result<qint64> PhotoLibrary::importPhoto(const ImportRequest& request)
{
    return m_d->importRequest(request);
}

Result<int> PhotoLibrary::restoreFromTrash(const QList<qint64>& photoIds)
{
    return m_d->tryWrite([&photoIds](WriteTransaction& transaction) -> Result<int> {
        Writer writer = transaction.writer();
        return TrashRows::restore(writer, photoIds);
    });
}

Result<EmptiedTrash> PhotoLibrary::emptyTrash(const std::optional<QList<qint64>>& photoIds)
{
    return m_d->emptyTrash(photoIds);
}

Result<void> PhotoLibrary::synchronise()
{
    return m_d->synchronise();
}

Result<void> PhotoLibrary::close()
{
    return m_d->close();
}
