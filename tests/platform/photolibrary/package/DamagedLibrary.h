#pragma once

#include "PackageState.h"
#include "WritableLibrary.h"

#include <QStringList>

/// A library with four photos in two events, one of them turned by its file and one in the trash,
/// an album, keywords and ratings, and ways to damage it.
class DamagedLibrary : public WritableLibrary
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// What verify() tells: "sentence [where]", with " *" behind what can be mended.
    [[nodiscard]] QStringList findings() const;
    /// Repairs it as the program does.
    [[nodiscard]] RepairReport repair() const;

    /// Runs SQL on the databases, behind the library's back.
    void execute(const QString& sql) const;
    void remove(const QString& relativePath) const;
    void write(const QString& relativePath, const QByteArray& bytes) const;
    void replace(const QString& relativePath, const QByteArray& old, const QByteArray& by) const;
    /// Sets a key of a property list.
    void setKey(const QString& relativePath, const QString& key, const QVariant& value) const;

    /// The first file below a folder of the package with that end of its name; relative.
    [[nodiscard]] QString fileIn(const QString& folder, const QString& end) const;
    /// The first text that SQL gives.
    [[nodiscard]] QString ask(const QString& sql) const;

    [[nodiscard]] PackageState state() const { return PackageState::of(package()); }

private:
    void importPhoto(PhotoLibrary& library, const QString& name, int tone, int orientation) const;
};
