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
    m_isWritten = file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
    qint64 done = 0;
    while (m_isWritten && done < bytes.size()) {
        // A disk that is full takes what still fits; why it takes no more, the next write tells.
        const qint64 count = file.write(bytes.constData() + done, bytes.size() - done);
        if (count <= 0) {
            break;
        }
        done += count;
    }
    if (!m_isWritten || done != bytes.size()) {
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
