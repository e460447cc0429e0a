#include "ScanSettings.h"

#include "Bundle.h"
#include "PropertyList.h"
#include "TargetSize.h"
#include "UserDefaults.h"

#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array kScaleFactors{1.0F, 0.75F, 0.5F, 0.25F};

template <typename Value>
void overlay(UserDefaults& defaults, const QString& key, const std::optional<Value>& value)
{
    if (value) {
        defaults.setVolatile(key, *value);
    }
}

} // namespace

void ScanSettings::applyTo(UserDefaults& defaults) const
{
    overlay(defaults, u"JpegQuality"_s, quality);
    overlay(defaults, u"AlbumEnabled"_s, albums);
    overlay(defaults, u"TagEnabled"_s, tag);
    overlay(defaults, u"TrashEnabled"_s, trash);
    overlay(defaults, u"ProcessingOption"_s, originals);
    if (longSide || shortSide) {
        overlay(defaults, u"LongSide"_s, longSide);
        overlay(defaults, u"ShortSide"_s, shortSide);
        defaults.setVolatile(u"LongLocked"_s, longSide.has_value());
        defaults.setVolatile(u"ShortLocked"_s, shortSide.has_value());
        defaults.setVolatile(u"JpegOutputSize"_s, kFixedSizeIndex);
    } else {
        defaults.setVolatile(u"JpegOutputSize"_s, scaleIndex.value_or(outputSizeIndex(defaults)));
    }
}

void registerFallbacks(UserDefaults& defaults, const Bundle& bundle)
{
    const Result<QVariant> fallbacks =
        PropertyList::read(bundle.pathForResource(u"UserDefaults"_s, u"plist"_s));
    if (fallbacks.ok()) {
        defaults.registerDefaults(fallbacks.value().toMap());
    }
}

OutputSize outputSize(const UserDefaults& defaults)
{
    const int index = outputSizeIndex(defaults);
    OutputSize size;
    size.fixedSize = index == kFixedSizeIndex;
    size.scaleFactor = size.fixedSize ? 1.0F : kScaleFactors.at(static_cast<std::size_t>(index));
    // As the controller starts: one side is always locked, and a free side is 0.
    size.longLocked = defaults.boolValue(u"LongLocked"_s);
    size.shortLocked = !size.longLocked || defaults.boolValue(u"ShortLocked"_s);
    size.longSize = size.longLocked ? defaults.integerValue(u"LongSide"_s) : 0;
    size.shortSize = size.shortLocked ? defaults.integerValue(u"ShortSide"_s) : 0;
    return size;
}

int outputSizeIndex(const UserDefaults& defaults)
{
    const qint64 index = defaults.integerValue(u"JpegOutputSize"_s);
    return index >= 0 && index <= kFixedSizeIndex ? static_cast<int>(index) : 0;
}
