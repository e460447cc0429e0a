#pragma once

#include "PhotoLibraryPrivate.h"
#include "Scripting.h"
#include "Session.h"

/// A photo's turn over a library package; see PhotoTurn. Used and destroyed on the thread that
/// opened it.
class PackageTurn final : public PhotoTurn
{
public:
    PackageTurn(std::shared_ptr<PhotoLibraryPrivate> library, std::shared_ptr<Session> session);
    ~PackageTurn() override;
    PackageTurn(const PackageTurn&) = delete;
    PackageTurn& operator=(const PackageTurn&) = delete;

    void expect(const ProvedJpeg& jpeg) override;
    void commit() override;

private:
    void end();

    std::shared_ptr<PhotoLibraryPrivate> m_library;
    std::shared_ptr<Session> m_session;
};
