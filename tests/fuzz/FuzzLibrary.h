#pragma once

#include "Connection.h"
#include "TestHome.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A small library with photos of most kinds, in a folder that goes with the process, for targets
/// whose inputs meet its databases. Made at the first use; the process has no other home from then
/// on. One thread.
class FuzzLibrary final
{
public:
    [[nodiscard]] static FuzzLibrary& instance();

    [[nodiscard]] QString package() const { return folder() + QStringLiteral("/P.photolibrary"); }

    /// Where a disk of referenced masters is mapped to, beside the package.
    [[nodiscard]] QString disk() const { return folder() + QStringLiteral("/Disk"); }

    /// Open for writing. What a target changes is rolled back by that target.
    [[nodiscard]] Connection& connection() { return *m_connection; }

private:
    FuzzLibrary();

    [[nodiscard]] QString folder() const { return m_folder.path(); }

    TestHome m_home;
    QTemporaryDir m_folder;
    std::unique_ptr<Connection> m_connection;
};
