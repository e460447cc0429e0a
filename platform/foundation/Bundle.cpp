#include "Bundle.h"

#include "PropertyList.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

Bundle::Bundle(QString root)
    : m_root(std::move(root))
{
    const Result<QVariant> info = PropertyList::read(m_root + "/Info.plist"_L1);
    if (info.ok()) {
        m_info = info.value().toMap();
    }
}

QString Bundle::name() const
{
    return m_info.value(u"CFBundleName"_s).toString();
}

QString Bundle::version() const
{
    return m_info.value(u"CFBundleShortVersionString"_s).toString();
}

QString Bundle::pathForResource(const QString& name, const QString& type) const
{
    const QString fileName = type.isEmpty() ? name : name + u'.' + type;
    const QString path = m_root + u'/' + fileName;
    return QFileInfo(path).isFile() ? path : QString();
}
