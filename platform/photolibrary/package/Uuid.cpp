#include "Uuid.h"

#include <QByteArray>
#include <QUuid>

using namespace Qt::StringLiterals;

QString Uuid::create()
{
    const QByteArray text =
        QUuid::createUuid().toRfc4122().toBase64(QByteArray::OmitTrailingEquals);
    return QString::fromLatin1(text).replace('/'_L1, '%'_L1);
}

bool Uuid::isSafeName(const QString& text)
{
    return !text.isEmpty() && text != "."_L1 && text != ".."_L1 && !text.contains('/'_L1) &&
           !text.contains(QChar(u'\0'));
}
