#pragma once

#include <QMap>
#include <QString>

/// All that a package holds, to be compared with what it held before: each row of the databases
/// and each file, times of writing left out. Rows are told apart by table and content, but for the
/// ids that rows of indexes have.
class PackageState final
{
public:
    /// Fails the test where the databases cannot be read.
    [[nodiscard]] static PackageState of(const QString& package);

    /// A line for each row and file that is not the same in both; empty when nothing differs.
    [[nodiscard]] QString differenceTo(const PackageState& other) const;

private:
    void addRows(const QString& package);
    void addFiles(const QString& package);

    QMap<QString, QByteArray> m_entries;
};
