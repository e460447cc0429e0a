#include "CatalogueComparison.h"
#include "CatalogueReader.h"
#include "CatalogueWriter.h"
#include "FuzzInput.h"
#include "FuzzLibrary.h"
#include "FuzzTarget.h"
#include "PropertyList.h"
#include "RollCatalogue.h"
#include "Scripting.h"

using namespace Qt::StringLiterals;

namespace
{

QVariantMap contentOf(const QByteArray& bytes)
{
    const Result<QVariant> parsed = PropertyList::parse(bytes);
    return parsed.ok() ? parsed.value().toMap() : QVariantMap();
}

/// A scan looks up the rolls of photos in whatever it finds there.
void lookUpRolls(const QVariantMap& content)
{
    const RollCatalogue catalogue(content);
    const QVariantMap images = content.value(u"Master Image List"_s).toMap();
    for (const QVariant& image : images) {
        try {
            static_cast<void>(catalogue.rollName(image.toMap().value(u"GUID"_s).toString()));
        } catch (const ScriptingException&) { // a roll without a name
            return;
        }
    }
}

} // namespace

/// Any bytes in the place of AlbumData.xml are either no catalogue, or what a new one carries over
/// from them leaves it a catalogue that can be read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzLibrary& library = FuzzLibrary::instance();
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    lookUpRolls(contentOf(bytes));
    const OldCatalogue old = OldCatalogue::parse(bytes);
    if (!old.wasRead()) {
        return 0;
    }
    const CatalogueModel model = CatalogueReader::read(library.connection(), old);
    library.connection().resetStatements();
    const CatalogueWriter writer(model, old, library.package());
    const QByteArray full = writer.full();
    const QVariantMap wanted = contentOf(full);
    const QVariantMap brief = contentOf(writer.brief());
    requireHolds(!wanted.isEmpty() && !brief.isEmpty());
    requireHolds(OldCatalogue::parse(full).wasRead());
    const QVariantMap found = contentOf(bytes);
    static_cast<void>(CatalogueComparison::ofFull(found, wanted));
    static_cast<void>(CatalogueComparison::ofBrief(found, brief, wanted));
    return 0;
}
