#include "ForecastLabel.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace
{

QString signOf(PressForecast::Severity severity)
{
    switch (severity) {
    case PressForecast::Severity::Information:
        return u"•"_s;
    case PressForecast::Severity::Warning:
        return u"⚠"_s;
    case PressForecast::Severity::Blocked:
        return u"✖"_s;
    }
    Q_UNREACHABLE();
}

QString rowOf(const PressForecast::Line& line)
{
    const QString sentence = line.text.toHtmlEscaped();
    const bool isBlocked = line.severity == PressForecast::Severity::Blocked;
    return u"<tr><td align=\"center\">%1&nbsp;</td><td>%2</td></tr>"_s.arg(
        signOf(line.severity), isBlocked ? u"<b>%1</b>"_s.arg(sentence) : sentence);
}

} // namespace

ForecastLabel::ForecastLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::RichText);
    setWordWrap(true);
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void ForecastLabel::setLines(const QList<PressForecast::Line>& lines)
{
    QStringList sentences;
    QString rows;
    for (const PressForecast::Line& line : lines) {
        sentences += line.text;
        rows += rowOf(line);
    }
    setText(u"<table cellspacing=\"0\" cellpadding=\"1\">%1</table>"_s.arg(rows));
    setAccessibleName(sentences.join(u'\n'));
}
