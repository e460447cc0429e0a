#include "MetadataValues.h"

#include "ImagePropertiesContent.h"

#include <QStringDecoder>

#include <lcms2.h>

#include <cmath>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

QString decoded(const std::string& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(QByteArrayView(bytes.data(), std::ssize(bytes)));
    QString result = utf8.hasError() ? QString::fromLatin1(bytes.data(), std::ssize(bytes)) : text;
    // A field of fixed size ends at its first zero byte.
    const qsizetype end = result.indexOf(QChar(u'\0'));
    return (end < 0 ? result : result.left(end)).trimmed();
}

QStringList iptcTexts(const Exiv2::IptcData& iptc, uint16_t tag)
{
    QStringList texts;
    for (const Exiv2::Iptcdatum& datum : iptc) {
        if (datum.record() == Exiv2::IptcDataSets::application2 && datum.tag() == tag) {
            const QString text = decoded(datum.toString());
            if (!text.isEmpty()) {
                texts.append(text);
            }
        }
    }
    return texts;
}

/// All texts of a property: the items of an array, the wording of a text in several languages.
QStringList xmpTexts(const Exiv2::XmpData& xmp, const char* key)
{
    const auto found = xmp.findKey(Exiv2::XmpKey(key));
    if (found == xmp.end()) {
        return {};
    }
    QStringList texts;
    if (const auto* languages = dynamic_cast<const Exiv2::LangAltValue*>(&found->value())) {
        const auto standard = languages->value_.find("x-default");
        const auto chosen =
            standard != languages->value_.end() ? standard : languages->value_.begin();
        if (chosen != languages->value_.end()) {
            texts.append(decoded(chosen->second));
        }
    } else {
        for (long index = 0; index < found->count(); ++index) {
            texts.append(decoded(found->toString(index)));
        }
    }
    texts.removeAll(QString());
    return texts;
}

/// The first of several texts that says anything.
QString firstOf(const QStringList& texts)
{
    return texts.isEmpty() ? QString() : texts.first();
}

} // namespace

namespace MetadataValues
{

QString textOf(const Exiv2::ExifData& exif, const char* key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? QString() : decoded(found->toString());
}

QByteArray bytesOf(const Exiv2::ExifData& exif, const char* key)
{
    constexpr long kLongest = 64L * 1024;
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->size() <= 0 || found->size() > kLongest) {
        return {};
    }
    QByteArray bytes(found->size(), '\0');
    found->copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::littleEndian);
    return bytes;
}

std::optional<double> numberOf(const Exiv2::ExifData& exif, const char* key, long index)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || index >= found->count()) {
        return std::nullopt;
    }
    switch (found->typeId()) {
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong:
        return static_cast<double>(found->toLong(index));
    case Exiv2::unsignedRational: {
        // Exiv2 hands the parts out signed, which turns those above 2^31 over.
        const Exiv2::Rational parts = found->toRational(index);
        const auto denominator = static_cast<uint32_t>(parts.second);
        if (denominator == 0) {
            return std::nullopt;
        }
        return static_cast<double>(static_cast<uint32_t>(parts.first)) / denominator;
    }
    case Exiv2::signedRational: {
        const Exiv2::Rational parts = found->toRational(index);
        if (parts.second == 0) {
            return std::nullopt;
        }
        return static_cast<double>(parts.first) / parts.second;
    }
    default:
        return std::nullopt;
    }
}

void readDescriptions(const ImageProperties::Content& content, ImageFacts& facts)
{
    using Sets = Exiv2::IptcDataSets;
    const Exiv2::IptcData& iptc = content.iptc;
    const Exiv2::XmpData& xmp = content.xmp;
    facts.title = firstOf(xmpTexts(xmp, "Xmp.dc.title") + iptcTexts(iptc, Sets::ObjectName));
    facts.caption = firstOf(iptcTexts(iptc, Sets::Caption) + xmpTexts(xmp, "Xmp.dc.description"));
    if (facts.caption.isEmpty()) {
        facts.caption = textOf(content.exif, "Exif.Image.ImageDescription");
    }
    facts.byline = iptcTexts(iptc, Sets::Byline).join(u", "_s);
    if (facts.byline.isEmpty()) {
        facts.byline = xmpTexts(xmp, "Xmp.dc.creator").join(u", "_s);
    }
    facts.copyrightNotice =
        firstOf(iptcTexts(iptc, Sets::Copyright) + xmpTexts(xmp, "Xmp.dc.rights"));
    facts.keywords = xmpTexts(xmp, "Xmp.dc.subject");
    if (facts.keywords.isEmpty()) {
        facts.keywords = iptcTexts(iptc, Sets::Keywords);
    }
    facts.keywords.removeDuplicates();
    const QStringList lens = xmpTexts(xmp, "Xmp.aux.Lens");
    if (!lens.isEmpty() && !facts.texts.contains(u"LensModel"_s)) {
        facts.texts.insert(u"LensModel"_s, lens.first());
    }
}

QString profileName(const QByteArray& icc)
{
    if (icc.isEmpty()) {
        return {};
    }
    const std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(
        cmsOpenProfileFromMem(icc.constData(), static_cast<cmsUInt32Number>(icc.size())),
        &cmsCloseProfile);
    if (profile == nullptr) {
        return {};
    }
    const auto size =
        cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, "en", "US", nullptr, 0);
    constexpr cmsUInt32Number kLongest = 1024;
    if (size == 0 || size > kLongest) {
        return {};
    }
    std::string name(size, '\0');
    cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, "en", "US", name.data(), size);
    return decoded(name);
}

} // namespace MetadataValues
