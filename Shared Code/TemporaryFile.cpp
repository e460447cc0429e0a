#include "TemporaryFile.h"

#include "Scripting.h"
#include "Texts.h"
#include "helpers.h"

#include <QFile>

using namespace Qt::StringLiterals;

TemporaryFile::~TemporaryFile()
{
    remove();
}

void TemporaryFile::setPath(const QString& folder, const QString& fileName)
{
    if (fileName.contains(u'/') || fileName.contains(QChar(u'\0'))) {
        throw ScriptingException(u"WriteFailed"_s, Texts::unusableFileName(fileName));
    }
    m_path = folder + fileName;
}

void TemporaryFile::write(const QByteArray& bytes)
{
    QFile file(m_path);
    m_isWritten = file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    if (!m_isWritten || file.write(bytes) != bytes.size() || !file.flush()) {
        throw ScriptingException(u"WriteFailed"_s,
                                 Texts::temporaryFileNotWritten(m_path, file.errorString()));
    }
}

void TemporaryFile::remove()
{
    if (m_isWritten) {
        helpers::deleteFile(m_path);
        m_isWritten = false;
    }
}
