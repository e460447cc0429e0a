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

/// Copies a packet, leaving out properties that it has copied before.
class Copy final
{
public:
    explicit Copy(const QByteArray& packet)
        : m_reader(packet)
        , m_writer(&m_copied)
    {
    }

    /// Nothing where the packet is no whole XML.
    [[nodiscard]] QByteArray made()
    {
        while (!m_reader.atEnd() && m_depth < kDeepest) {
            m_reader.readNext();
            if (m_reader.isStartElement()) {
                start();
            } else {
                copyOther();
            }
        }
        return m_reader.hasError() || m_depth != 0 ? QByteArray() : m_copied;
    }

private:
    void start()
    {
        ++m_depth;
        if (m_descriptionDepth == 0 && isDescription(m_reader)) {
            m_descriptionDepth = m_depth;
        } else if (isProperty() && wasSeen()) {
            m_reader.skipCurrentElement();
            --m_depth;
            return;
        }
        m_writer.writeCurrentToken(m_reader);
    }

    void copyOther()
    {
        if (m_reader.isEndElement()) {
            m_descriptionDepth = m_depth == m_descriptionDepth ? 0 : m_descriptionDepth;
            --m_depth;
        }
        if (!m_reader.hasError()) {
            m_writer.writeCurrentToken(m_reader);
        }
    }

    [[nodiscard]] bool isProperty() const
    {
        return m_descriptionDepth != 0 && m_depth == m_descriptionDepth + 1;
    }

    /// Notes the element's name.
    [[nodiscard]] bool wasSeen()
    {
        const QString property = u"%1 %2"_s.arg(m_reader.namespaceUri(), m_reader.name());
        const bool seen = m_seen.contains(property);
        m_seen.insert(property);
        return seen;
    }

    QByteArray m_copied;
    QXmlStreamReader m_reader;
    QXmlStreamWriter m_writer;
    QSet<QString> m_seen;
    int m_depth{0};
    int m_descriptionDepth{0};
};

} // namespace

QByteArray XmpRepair::withoutDuplicates(const QByteArray& packet)
{
    // Some writers leave bytes around the packet, and fill what they reserved for it with zeros.
    const qsizetype begin = packet.indexOf('<');
    const qsizetype end = packet.lastIndexOf('>') + 1;
    return begin >= 0 && end > begin ? Copy(packet.sliced(begin, end - begin)).made()
                                     : QByteArray();
}
