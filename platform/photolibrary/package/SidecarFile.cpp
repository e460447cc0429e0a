#include "SidecarFile.h"

#include "AtomicFile.h"
#include "PropertyList.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

SidecarFile::SidecarFile(QString path, Form form, QVariantMap content)
    : m_path(std::move(path))
    , m_form(form)
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
    return SidecarFile(path, form, read.ok() ? read.value().toMap() : QVariantMap());
}

Result<void> SidecarFile::save()
{
    if (m_content == m_old && !m_old.isEmpty()) {
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
    }
    return written;
}

Result<void> SidecarFile::saveStamped(double now)
{
    if (m_content == m_old && !m_old.isEmpty()) {
        return {};
    }
    m_content.insert(u"plistWriteTimestamp"_s, QVariant::fromValue(PropertyList::Date{now}));
    return save();
}
