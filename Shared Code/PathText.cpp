#include "PathText.h"

namespace
{

/// Place of the dot before the extension, or -1.
qsizetype extensionDot(const QString& path)
{
    const qsizetype nameStart = path.lastIndexOf(u'/') + 1;
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot > nameStart ? dot : -1;
}

} // namespace

QStringList PathText::components(const QString& path)
{
    QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    if (path.startsWith(u'/')) {
        parts.prepend(QStringLiteral("/"));
    }
    return parts;
}

QString PathText::extension(const QString& path)
{
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? QString() : path.mid(dot + 1);
}

QString PathText::withoutExtension(const QString& path)
{
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? path : path.left(dot);
}
