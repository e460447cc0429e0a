#include "FuzzTarget.h"
#include "GenerateFormData.h"

#include <cstdint>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace
{

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// Takes what must come next off the body.
void take(QByteArray& rest, const QByteArray& expected)
{
    require(rest.startsWith(expected));
    rest.remove(0, expected.size());
}

QByteArray takeLine(QByteArray& rest)
{
    const qsizetype end = rest.indexOf("\r\n");
    require(end >= 0);
    QByteArray line = rest.left(end);
    rest.remove(0, end + 2);
    return line;
}

} // namespace

/// Whatever names and texts fields have, each keeps to its own part: one header line that the name
/// cannot leave, and the text untouched. `data`: names and texts in turn, each ended by a zero
/// byte.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QList<QByteArray> pieces =
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)).split('\0');
    QVariantMap values;
    for (qsizetype index = 0; index + 1 < pieces.size(); index += 2) {
        values.insert(QString::fromUtf8(pieces.at(index)), QString::fromUtf8(pieces.at(index + 1)));
    }
    QByteArray rest = GenerateFormData(values, u"boundary"_s);
    for (const QVariant& value : std::as_const(values)) {
        take(rest, "--boundary\r\n");
        const QByteArray line = takeLine(rest);
        require(line.startsWith("Content-Disposition: form-data; name=\""));
        require(line.endsWith('"') && line.count('"') == 2 && line.count('\r') == 0 &&
                line.count('\n') == 0);
        take(rest, "Content-Type: text/plain; charset=utf-8\r\n\r\n");
        take(rest, value.toString().toUtf8());
        take(rest, "\r\n");
    }
    require(rest == "--boundary--\r\n");
    return 0;
}
