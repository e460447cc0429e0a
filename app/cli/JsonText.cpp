#include "JsonText.h"

#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QString>

using namespace Qt::StringLiterals;

namespace
{

/// All of them stand inside strings and in the basic plane, so one escape each will do.
bool steersTerminal(QChar character)
{
    const bool isPrintableAscii = character >= u' ' && character <= u'~';
    if (isPrintableAscii || character == u'\n') {
        return false; // nearly every one: asked first
    }
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph ||
           TextLayout::isDirectionMark(character.unicode());
}

} // namespace

QByteArray JsonText::withoutSteering(const QByteArray& json)
{
    const QString plain = QString::fromUtf8(json);
    QString escaped;
    escaped.reserve(plain.size());
    qsizetype taken = 0; // up to where `plain` is in `escaped`
    for (qsizetype index = 0; index < plain.size(); ++index) {
        const QChar character = plain.at(index);
        if (steersTerminal(character)) {
            escaped += QStringView(plain).sliced(taken, index - taken);
            escaped += u"\\u%1"_s.arg(character.unicode(), 4, 16, QLatin1Char('0'));
            taken = index + 1;
        }
    }
    escaped += QStringView(plain).sliced(taken);
    return escaped.toUtf8();
}

QByteArray JsonText::of(const QJsonValue& value)
{
    const QByteArray array =
        QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact); // "[value]"
    return withoutSteering(array.sliced(1, array.size() - 2));
}
