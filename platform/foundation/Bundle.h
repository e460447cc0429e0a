#pragma once

#include <QString>
#include <QVariantMap>

/// The application bundle: its information dictionary and its resource files. The files are
/// compiled into the programs (Qt resources below ":/corvane"), so nothing has to be installed for
/// them to be found. Immutable after construction; any thread.
class Bundle final
{
public:
    /// `root`: folder of the resources, ":/corvane" in the programs, any folder in tests.
    explicit Bundle(QString root);

    /// The content of "Info.plist"; empty when there is none.
    [[nodiscard]] const QVariantMap& infoDictionary() const { return m_info; }

    /// `infoDictionary()["CFBundleName"]`.
    [[nodiscard]] QString name() const;
    /// `infoDictionary()["CFBundleShortVersionString"]`.
    [[nodiscard]] QString version() const;
    /// Path of the resource "NAME.TYPE" that QFile can open, or a null string when there is none.
    [[nodiscard]] QString pathForResource(const QString& name, const QString& type) const;

private:
    QString m_root;
    QVariantMap m_info;
};
