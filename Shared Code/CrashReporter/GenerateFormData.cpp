#include "GenerateFormData.h"

#include "Assertion.h"
#include "SystemLog.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace
{

/// Of a number with a fraction.
constexpr int kSignificantDigits = 16;

QByteArray quoted(const QString& name)
{
    QByteArray bytes = name.toUtf8();
    bytes.replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A");
    return '"' + bytes + '"';
}

void appendText(QByteArray& body, const QString& name, const QString& text)
{
    body += "Content-Disposition: form-data; name=" + quoted(name) + "\r\n";
    body += "Content-Type: text/plain; charset=utf-8\r\n";
    body += "\r\n";
    body += text.toUtf8();
}

void appendFile(QByteArray& body, const QString& name, const QString& path)
{
    body += "Content-Disposition: form-data; name=" + quoted(name) +
            "; filename=" + quoted(QFileInfo(path).fileName()) + "\r\n";
    body += "Content-Type: application/octet-stream\r\n";
    body += "\r\n";
    // A pipe would be waited for.
    QFile file(path);
    if (QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)) {
        body += file.readAll();
    }
}

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

QString decimalText(const QVariant& number)
{
    switch (number.typeId()) {
    case QMetaType::Bool:
        return number.toBool() ? u"1"_s : u"0"_s;
    case QMetaType::Float:
    case QMetaType::Double:
        return QString::number(number.toDouble(), 'g', kSignificantDigits);
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QString::number(number.toULongLong());
    default:
        return QString::number(number.toLongLong());
    }
}

void logIllegal(const QVariant& value)
{
    const QString shown = value.typeId() == QMetaType::QUrl ? value.toUrl().toString()
                          : value.isValid()                 ? value.toString()
                                                            : u"(null)"_s;
    systemLog(u"ZTBCrashReporterError: formValues contained illegal object %1 of class %2"_s.arg(
        shown, value.isValid() ? QString::fromLatin1(value.typeName()) : u"(null)"_s));
}

void appendValue(QByteArray& body, const QString& name, const QVariant& value)
{
    if (value.typeId() == QMetaType::QString) {
        appendText(body, name, value.toString());
    } else if (isNumber(value)) {
        appendText(body, name, decimalText(value));
    } else if (value.typeId() == QMetaType::QUrl && value.toUrl().isLocalFile()) {
        appendFile(body, name, value.toUrl().toLocalFile());
    } else {
        logIllegal(value);
    }
}

} // namespace

QByteArray GenerateFormData( // NOLINT(readability-identifier-naming): the name by which it is known
    const std::optional<QVariantMap>& formValues,
    const QString& boundary)
{
    const QString function =
        u"NSData *GenerateFormData(NSDictionary *__strong, NSString *__strong)"_s;
    const QString file = u"Shared Code/CrashReporter/GenerateFormData"_s;
    CORVANE_CONSISTENCY_ASSERT(formValues.has_value(),
                               u"Invalid parameter not satisfying: nil != formValues"_s,
                               function,
                               file);
    CORVANE_CONSISTENCY_ASSERT(
        !boundary.isNull(), u"Invalid parameter not satisfying: nil != boundary"_s, function, file);
    const QByteArray line = "--" + boundary.toLatin1();
    QByteArray body;
    for (auto field = formValues->cbegin(); field != formValues->cend(); ++field) {
        body += line + "\r\n";
        appendValue(body, field.key(), field.value());
        body += "\r\n";
    }
    return body + line + "--\r\n";
}
