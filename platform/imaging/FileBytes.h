#pragma once

#include <QByteArrayView>
#include <QString>
#include <QtEndian>

/// Numbers and marks at offsets of a file that may end anywhere. The bytes have to outlive it. Any
/// thread.
class FileBytes final
{
public:
    explicit FileBytes(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    [[nodiscard]] quint64 size() const { return static_cast<quint64>(m_bytes.size()); }

    [[nodiscard]] bool holds(quint64 offset, quint64 length) const
    {
        return offset <= size() && length <= size() - offset;
    }

    /// 0 where it would lie beyond the end.
    template <typename Number>
    [[nodiscard]] Number big(quint64 offset) const
    {
        return holds(offset, sizeof(Number)) ? qFromBigEndian<Number>(m_bytes.data() + offset)
                                             : Number{0};
    }

    template <typename Number>
    [[nodiscard]] Number little(quint64 offset) const
    {
        return holds(offset, sizeof(Number)) ? qFromLittleEndian<Number>(m_bytes.data() + offset)
                                             : Number{0};
    }

    [[nodiscard]] bool has(quint64 offset, QByteArrayView mark) const
    {
        return holds(offset, static_cast<quint64>(mark.size())) &&
               m_bytes.sliced(static_cast<qsizetype>(offset), mark.size()) == mark;
    }

    /// A clause for a picture that would end at that offset, beyond the file's end.
    [[nodiscard]] QString shortOf(quint64 end) const
    {
        return QStringLiteral("it ends %1 bytes before its picture does; the file is not whole")
            .arg(end - size());
    }

private:
    QByteArrayView m_bytes;
};
