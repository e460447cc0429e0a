#include "ProgressLine.h"

#include "TextLayout.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kBarWidth = 24;

QString bar(qint64 position, qint64 total)
{
    const double share = total > 0 ? static_cast<double>(position) / static_cast<double>(total) : 0;
    const int full = static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * kBarWidth));
    return u'[' + QString(full, u'#') + QString(kBarWidth - full, u'-') + u']';
}

} // namespace

QString ProgressLine::render(const ProgressState& state, int columns)
{
    const QStringList parts{
        state.activity,
        state.total > 0 ? bar(state.position, state.total) : QString(),
        state.total > 0 ? u"%1/%2"_s.arg(state.position).arg(state.total) : QString(),
        state.timeRemaining,
        TextLayout::printable(state.name),
    };
    QString line;
    for (const QString& part : parts) {
        const QString separator = line.isEmpty() ? QString() : u"  "_s;
        const int space = columns - 1 - TextLayout::displayWidth(line + separator);
        const bool last = &part == &parts.constLast();
        if (part.isEmpty() || space < 1 || (!last && TextLayout::displayWidth(part) > space)) {
            continue;
        }
        line += separator + TextLayout::elided(part, space);
    }
    return line;
}
