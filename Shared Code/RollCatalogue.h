#pragma once

#include "Scripting.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <vector>

class CorvaneDelegate;

/// The library's catalogue file "AlbumData.xml", as far as it tells which roll (event) a picture
/// belongs to. Immutable after construction; any thread.
///
/// Format: an XML property list. "Master Image List" is a dictionary of image records with "GUID"
/// (text) and "Roll" (integer); "List of Rolls" is an array of roll records with "RollID"
/// (integer) and "RollName" (text).
class RollCatalogue final
{
public:
    /// One album name per selected photo, in order: the name of the photo's roll, or the default
    /// album's where the catalogue is missing or does not know the photo. `libraryPath`: folder
    /// of the library. Logs what could not be determined.
    /// Thread: the scan's worker. Errors: raises ScriptingException where a photo's roll has no
    /// name, and what the photo application raises.
    [[nodiscard]] static QStringList albumNames(const QList<ScriptingObjectPtr>& selection,
                                                const QString& libraryPath,
                                                CorvaneDelegate& appDelegate);

    /// `content`: the property list; what is not of the format above is left out.
    explicit RollCatalogue(const QVariant& content);

    /// Name of the roll of the picture with that GUID; nothing where no record with that GUID
    /// names a roll that exists. The first such record counts. Raises as albumNames() does.
    [[nodiscard]] std::optional<QString> rollName(const QString& guid) const;

private:
    struct Image {
        QString guid;
        qint64 roll{0};
    };

    struct Roll {
        qint64 id{0};
        std::optional<QString> name;
    };

    [[nodiscard]] const Roll* rollWithId(qint64 id) const;

    // The search is a plain walk over all images; their GUIDs' hash values lie apart and close
    // together, so that a walk reads eight bytes an image.
    std::vector<size_t> m_guidHashes;
    std::vector<Image> m_images;
    std::vector<Roll> m_rolls;
};
