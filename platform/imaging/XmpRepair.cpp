#include "XmpRepair.h"

#include <QSet>
#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;

namespace
{

/// Elements deeper than this are no XMP of any program.
constexpr int kDeepest = 100;

/// x:xmpmeta, rdf:RDF, rdf:Description; the elements within are the properties.
bool isDescription(const QXmlStreamReader& reader)
{
    return reader.name() == u"Description"_s &&
           reader.namespaceUri() == u"http://www.w3.org/1999/02/22-rdf-syntax-ns#"_s;
}

} // namespace

QByteArray XmpRepair::withoutDuplicates(const QByteArray& packet)
{
    QByteArray repaired;
    QXmlStreamReader reader(packet);
    QXmlStreamWriter writer(&repaired);
    QSet<QString> seen;
    int depth = 0;
    int descriptionDepth = 0;
    while (!reader.atEnd() && depth < kDeepest) {
        reader.readNext();
        if (reader.isStartElement()) {
            ++depth;
            if (descriptionDepth == 0 && isDescription(reader)) {
                descriptionDepth = depth;
            } else if (descriptionDepth != 0 && depth == descriptionDepth + 1) {
                const QString property = u"%1 %2"_s.arg(reader.namespaceUri(), reader.name());
                if (seen.contains(property)) {
                    reader.skipCurrentElement();
                    --depth;
                    continue;
                }
                seen.insert(property);
            }
        } else if (reader.isEndElement()) {
            descriptionDepth = depth == descriptionDepth ? 0 : descriptionDepth;
            --depth;
        }
        if (!reader.hasError()) {
            writer.writeCurrentToken(reader);
        }
    }
    return reader.hasError() || depth != 0 ? QByteArray() : repaired;
}
