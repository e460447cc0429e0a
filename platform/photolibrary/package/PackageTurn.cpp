#include "PackageTurn.h"

PackageTurn::PackageTurn(std::shared_ptr<PhotoLibraryPrivate> library,
                         std::shared_ptr<Session> session)
    : m_library(std::move(library))
    , m_session(std::move(session))
{
    m_session->turnOpen = true;
}

PackageTurn::~PackageTurn()
{
    end();
}

void PackageTurn::expect(const ProvedJpeg& jpeg)
{
    m_session->expected = jpeg;
}

void PackageTurn::commit()
{
    if (!m_session->transaction) {
        end();
        return;
    }
    const Result<void> committed = m_session->transaction->commit();
    end();
    if (!committed.ok()) {
        m_session->lastImport = QList<qint64>();
        LibraryErrors::raise(committed.error());
    }
}

void PackageTurn::end()
{
    m_session->transaction.reset();
    m_session->expected.reset();
    m_session->turnSelection.reset();
    m_session->turnOpen = false;
}
