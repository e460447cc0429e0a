#include "ScanClosing.h"

#include "ScanTexts.h"

#include <QFileInfo>

namespace
{

/// A photo is converted to a file of its own name with another extension.
bool bearsAnotherName(const ScannedPhoto& photo)
{
    const auto stem = [](const QString& name) { return QFileInfo(name).completeBaseName(); };
    return !photo.outcome.importedAs.isEmpty() &&
           stem(photo.outcome.importedAs) != stem(photo.filename);
}

bool wasNotConverted(const ScannedPhoto& photo)
{
    return photo.outcome.kind != PhotoOutcome::Kind::Converted &&
           photo.outcome.kind != PhotoOutcome::Kind::NotReached;
}

} // namespace

ScanClosing ScanClosing::of(const QList<ScannedPhoto>& photos)
{
    ScanClosing closing;
    for (ScannedPhoto photo : photos) {
        if (wasNotConverted(photo)) {
            if (photo.outcome.reason.isEmpty()) {
                photo.outcome.reason = ScanTexts::noReason();
            }
            closing.notConverted += photo;
        } else if (bearsAnotherName(photo)) {
            closing.otherNames += photo;
        }
    }
    return closing;
}
