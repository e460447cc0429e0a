#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "PackageFiles.h"
#include "PathMapping.h"

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace
{

/// A package with names that the Mac would not tell apart from others.
class PackageOfNames final
{
public:
    PackageOfNames()
    {
        const QDir masters(path() + u"/Masters"_s);
        for (const QString& name : {u"2010/06/a.JPG"_s, u"2010/Gru\u0308\u00DFe/b"_s}) {
            if (!m_folder.isValid() || !masters.mkpath(name)) {
                qFatal("there is no folder for a package");
            }
        }
    }

    [[nodiscard]] QString path() const { return m_folder.path() + u"/P.photolibrary"_s; }

private:
    QTemporaryDir m_folder;
};

void requireBelow(const QString& root, const QString& path)
{
    requireHolds(path.isEmpty() || QDir::cleanPath(path).startsWith(root + u'/') ||
                 QDir::cleanPath(path) == root);
}

} // namespace

/// Whatever a database calls a file, it is one of the folder that it belongs to, or refused.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const PackageOfNames kPackage;
    const QString package = kPackage.path();
    const QString name = QString::fromUtf8(
        QByteArrayView(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    requireBelow(package + u"/Masters"_s, PathMapping::inside(package, "Masters"_L1, name));
    requireBelow(package + u"/Masters"_s, PathMapping::master(package, {name}));
    requireBelow(package, PathMapping::master(package, {name, true, package}));
    if (PackageFiles::isInside(name)) {
        requireHolds(QDir::cleanPath(package + u'/' + name).startsWith(package + u'/'));
        requireHolds(!name.contains(QChar(u'\0')));
    }
    static_cast<void>(PackageFiles::bytesOf(package, name));
    static_cast<void>(PackageFiles::leadsOut(package, name));
    return 0;
}
