#include "SidecarFile.h"

#include "AtomicFile.h"
#include "PropertyList.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

SidecarFile::SidecarFile(QString path, Form form, Found found, QVariantMap content)
    : m_path(std::move(path))
    , m_form(form)
    , m_found(found)
    , m_old(content)
    , m_content(std::move(content))
{
}

Result<SidecarFile> SidecarFile::open(const QString& path, Form form)
{
    const Result<QVariant> read = PropertyList::read(path);
    if (!read.ok() && read.error().code == ErrorCode::Unreadable) {
        return read.error();
    }
    const QVariantMap content = read.ok() ? read.value().toMap() : QVariantMap();
    const bool isMissing = !read.ok() && read.error().code == ErrorCode::NotFound;
    const Found damagedOrWhole = content.isEmpty() ? Found::Damaged : Found::Whole;
    return SidecarFile(path, form, isMissing ? Found::Missing : damagedOrWhole, content);
}

QStringList SidecarFile::differingKeys() const
{
    QStringList keys;
    for (const QVariantMap* const side : {&m_old, &m_content}) {
        for (auto entry = side->begin(); entry != side->end(); ++entry) {
            if (m_old.value(entry.key()) != m_content.value(entry.key())) {
                keys.append(entry.key());
            }
        }
    }
    keys.sort();
    keys.removeDuplicates();
    return keys;
}

Result<void> SidecarFile::save()
{
    if (!differs()) {
        return {};
    }
    const Result<QByteArray> bytes =
        m_form == Form::Binary ? PropertyList::toBinary(m_content) : PropertyList::toXml(m_content);
    if (!bytes.ok()) {
        return bytes.error();
    }
    if (Result<void> made = AtomicFile::makeFolder(QFileInfo(m_path).path()); !made.ok()) {
        return made;
    }
    Result<void> written = AtomicFile::write(m_path, bytes.value());
    if (written.ok()) {
        m_old = m_content;
        m_found = Found::Whole;
    }
    return written;
}

Result<void> SidecarFile::saveStamped(double now)
{
    if (!differs()) {
        return {};
    }
    m_content.insert(u"plistWriteTimestamp"_s, QVariant::fromValue(PropertyList::Date{now}));
    return save();
}
