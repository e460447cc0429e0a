#include "DesktopWorkspace.h"

#include <QProcess>

using namespace Qt::StringLiterals;

bool DesktopWorkspace::open(const QUrl& url)
{
    if (!url.isValid() || url.scheme().isEmpty()) {
        return false;
    }
    QProcess opener;
    opener.setProgram(u"xdg-open"_s);
    opener.setArguments({url.toString(QUrl::FullyEncoded)});
    opener.setStandardInputFile(QProcess::nullDevice());
    opener.setStandardOutputFile(QProcess::nullDevice());
    opener.setStandardErrorFile(QProcess::nullDevice());
    return opener.startDetached();
}
