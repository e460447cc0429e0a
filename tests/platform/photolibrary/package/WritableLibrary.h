#pragma once

#include "PhotoLibrary.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

/// A new, empty library of a test's own in a temporary folder, opened as the program opens it, and
/// picture files beside it.
class WritableLibrary : public testing::Test
{
protected:
    void SetUp() override;

    [[nodiscard]] QString package() const;

    /// Everything of the test's own lies below it.
    [[nodiscard]] QString folder() const { return m_folder.path(); }

    /// Asserts that the opening succeeds; null when it does not.
    [[nodiscard]] std::unique_ptr<PhotoLibrary> open(Access access) const;
    [[nodiscard]] static PhotoApplicationPtr application(PhotoLibrary& library);

    /// A whole JPEG file beside the package; returns its path.
    [[nodiscard]] QString makePicture(const QString& name) const;
    [[nodiscard]] QString makeFile(const QString& name, const QByteArray& bytes) const;

    /// Package-relative paths of the files in Masters, Thumbnails and Previews, sorted.
    [[nodiscard]] QStringList pictureFiles() const;
    /// Package-relative paths of all sidecars of versions, sorted.
    [[nodiscard]] QStringList versionSidecars() const;
    /// Number of rows, as a connection of its own sees them.
    [[nodiscard]] qint64 rows(const QString& table) const;
    /// That databases and files agree, as a connection of its own sees them.
    void expectSound() const;

    /// Imports into the photo library; raises as the application does.
    static void import(PhotoLibrary& library, const QString& path);
    /// The photo of the last import; null when there is none.
    [[nodiscard]] static PhotoPtr lastImported(PhotoLibrary& library);

private:
    [[nodiscard]] QStringList filesBelow(const QStringList& folders) const;

    QTemporaryDir m_folder;
};
