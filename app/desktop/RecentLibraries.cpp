#include "RecentLibraries.h"

#include "UserDefaults.h"

using namespace Qt::StringLiterals;

namespace
{

QString key()
{
    return u"RecentLibraries"_s;
}

} // namespace

RecentLibraries::RecentLibraries(UserDefaults& defaults)
    : m_defaults(defaults)
{
}

QStringList RecentLibraries::paths() const
{
    return m_defaults.value(key()).toStringList();
}

void RecentLibraries::add(const QString& path)
{
    QStringList known = paths();
    known.removeAll(path);
    known.prepend(path);
    m_defaults.setValue(key(), known.mid(0, kMost));
}

void RecentLibraries::clear()
{
    m_defaults.remove(key());
}
