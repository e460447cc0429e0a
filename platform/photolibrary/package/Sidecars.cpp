#include "Sidecars.h"

#include "AtomicFile.h"
#include "LibrarySidecars.h"
#include "PackageFiles.h"
#include "SidecarOutput.h"
#include "SidecarWriter.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Removes the sidecar of an object that is gone: a rebuild would bring the object back.
Result<void> removeFile(const QString& path)
{
    if (!QFileInfo::exists(path)) {
        return {};
    }
    QFile file(path);
    if (!file.remove()) {
        return Error{ErrorCode::NotWritable,
                     u"\"%1\" cannot be removed (%2)."_s.arg(path, file.errorString())};
    }
    return AtomicFile::flushFolder(QFileInfo(path).path());
}

/// Nothing outside the package is replaced, whatever a link in it leads to.
Result<void> mayBeWritten(const QString& package, const SidecarFile& file)
{
    return PackageFiles::mayBeWritten(package, file.path().mid(package.size() + 1));
}

/// Writes them where they differ, but for those that a link leads out of the package.
class WritingOutput final : public SidecarOutput
{
public:
    WritingOutput(QString package, double now)
        : m_package(std::move(package))
        , m_now(now)
    {
    }

    [[nodiscard]] bool needsContentOf(const SidecarFile& /*file*/) const override { return true; }

    Result<void> put(SidecarFile& file, Stamp stamp) override
    {
        if (!file.differs()) {
            return {};
        }
        if (const Result<void> allowed = mayBeWritten(m_package, file); !allowed.ok()) {
            m_leftAlone = m_leftAlone.ok() ? allowed : m_leftAlone;
            return {};
        }
        return stamp == Stamp::With ? file.saveStamped(m_now) : file.save();
    }

    Result<void> remove(const QString& path) override { return removeFile(path); }

    /// Why the first of those is left alone.
    [[nodiscard]] const Result<void>& leftAlone() const { return m_leftAlone; }

private:
    QString m_package;
    double m_now;
    Result<void> m_leftAlone;
};

/// How an album is shown: the application itself lets its sidecar lag in that.
bool isOfLooks(const QString& key)
{
    return key == "ViewDictionary"_L1;
}

/// Notes those that differ.
class ComparingOutput final : public SidecarOutput
{
public:
    explicit ComparingOutput(QString package)
        : m_package(std::move(package))
    {
    }

    /// One that is missing or damaged differs, whatever it should say.
    [[nodiscard]] bool needsContentOf(const SidecarFile& file) const override
    {
        return file.found() == SidecarFile::Found::Whole;
    }

    Result<void> put(SidecarFile& file, Stamp /*stamp*/) override
    {
        const QStringList keys = file.differingKeys();
        const bool onlyLooks = !keys.isEmpty() && std::ranges::all_of(keys, isOfLooks);
        if (file.differs() && (file.found() != SidecarFile::Found::Whole || !onlyLooks)) {
            if (Result<void> allowed = mayBeWritten(m_package, file); !allowed.ok()) {
                return allowed;
            }
            m_stale.append({file.path(), file.found(), keys});
        }
        return {};
    }

    Result<void> remove(const QString& /*path*/) override { return {}; }

    /// What was noted since the last call.
    [[nodiscard]] QList<Sidecars::Stale> taken() { return std::exchange(m_stale, {}); }

private:
    QString m_package;
    QList<Sidecars::Stale> m_stale;
};

QStringList sorted(const QSet<QString>& names)
{
    QStringList list(names.begin(), names.end());
    list.sort();
    return list;
}

} // namespace

Result<void> Sidecars::write(Connection& connection, const Changes& changes, double now)
{
    WritingOutput output(connection.packagePath(), now);
    const Result<void> written = SidecarWriter(connection, output).put(changes);
    return written.ok() ? output.leftAlone() : written;
}

Sidecars::Comparison Sidecars::compare(Connection& connection, const Changes& changes)
{
    ComparingOutput output(connection.packagePath());
    SidecarWriter writer(connection, output);
    Comparison comparison;
    Changes& lagging = comparison.lagging;
    const auto noted = [&](const Result<void>& done) {
        const QList<Stale> stale = output.taken();
        comparison.stale << stale;
        if (!done.ok()) {
            comparison.unreadable << done.error().message;
        }
        return !stale.isEmpty();
    };
    for (const QString& uuid : sorted(changes.masters)) {
        if (noted(writer.putMaster(uuid))) {
            lagging.masters.insert(uuid);
        }
    }
    for (const QString& uuid : sorted(changes.albums)) {
        if (noted(writer.putAlbum(uuid))) {
            lagging.albums.insert(uuid);
        }
    }
    for (const QString& uuid : sorted(changes.folders)) {
        if (noted(writer.putFolder(uuid))) {
            lagging.folders.insert(uuid);
        }
    }
    lagging.keywords = changes.keywords && noted(LibrarySidecars::putKeywords(connection, output));
    lagging.adminData =
        changes.adminData && noted(LibrarySidecars::putDataModel(connection, output));
    return comparison;
}
