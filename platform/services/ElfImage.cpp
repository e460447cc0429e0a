#include "ElfImage.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>

namespace
{

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using DynamicEntry = ElfW(Dyn);
using SymbolEntry = ElfW(Sym);
using Note = ElfW(Nhdr);

constexpr unsigned char kNativeClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
/// More segments than any linker makes, and fewer than would take long.
constexpr std::size_t kMostSegments = 256;
constexpr std::size_t kMostDynamicEntries = 1024;
constexpr std::size_t kMostSymbols = 4U << 20U;

std::size_t roundedUp(std::size_t size, std::size_t alignment)
{
    return (size + alignment - 1) / alignment * alignment;
}

bool isFunction(const SymbolEntry& symbol)
{
    // The type stands in the lower half of the byte for both word sizes.
    const unsigned type = symbol.st_info & 0xFU;
    return (type == STT_FUNC || type == STT_GNU_IFUNC) && symbol.st_shndx != SHN_UNDEF;
}

} // namespace

struct ElfImage::Dynamic {
    std::uintptr_t symbols{0};
    std::uintptr_t strings{0};
    std::size_t stringsSize{0};
    std::uintptr_t gnuHash{0};
    std::uintptr_t hash{0};
};

ElfImage::ElfImage(std::uintptr_t start, std::uintptr_t end) noexcept
    : m_start(start)
    , m_end(end)
{
    if (!holds(start, sizeof(Header))) {
        return;
    }
    const auto header = valueAt<Header>(start);
    const bool isElf = std::memcmp(&header.e_ident[0], ELFMAG, SELFMAG) == 0 &&
                       header.e_ident[EI_CLASS] == kNativeClass &&
                       header.e_phentsize == sizeof(Segment) && header.e_phnum <= kMostSegments;
    if (!isElf || header.e_phoff >= end - start ||
        !holds(start + header.e_phoff, header.e_phnum * sizeof(Segment))) {
        return;
    }
    m_segments = start + header.e_phoff;
    m_segmentCount = header.e_phnum;
    for (std::size_t index = 0; index < m_segmentCount; ++index) {
        const auto segment = valueAt<Segment>(placeOfSegment(index));
        if (segment.p_type == PT_LOAD && segment.p_offset == 0) {
            m_bias = start - segment.p_vaddr;
            m_isValid = true;
            return;
        }
    }
}

bool ElfImage::holds(std::uintptr_t address, std::size_t size) const noexcept
{
    return address >= m_start && address <= m_end && size <= m_end - address;
}

std::span<const std::uint8_t> ElfImage::bytes(std::uintptr_t address,
                                              std::size_t size) const noexcept
{
    if (!holds(address, size)) {
        return {};
    }
    return {reinterpret_cast<const std::uint8_t*>(address), size};
}

/// All zero where the image ends before.
template <class Value>
Value ElfImage::valueAt(std::uintptr_t address) const noexcept
{
    Value value{};
    const std::span<const std::uint8_t> found = bytes(address, sizeof(Value));
    if (!found.empty()) {
        std::memcpy(&value, found.data(), sizeof(Value));
    }
    return value;
}

std::uintptr_t ElfImage::placeOfSegment(std::size_t index) const noexcept
{
    return m_segments + index * sizeof(Segment);
}

std::span<const std::uint8_t> ElfImage::buildId() const noexcept
{
    for (std::size_t index = 0; m_isValid && index < m_segmentCount; ++index) {
        const auto segment = valueAt<Segment>(placeOfSegment(index));
        if (segment.p_type == PT_NOTE) {
            const std::span<const std::uint8_t> found = buildIdIn(
                bytes(m_bias + segment.p_vaddr, segment.p_memsz), segment.p_align == 8 ? 8 : 4);
            if (!found.empty()) {
                return found;
            }
        }
    }
    return {};
}

std::span<const std::uint8_t> ElfImage::buildIdIn(std::span<const std::uint8_t> notes,
                                                  std::size_t alignment) const noexcept
{
    constexpr std::string_view kOwner("GNU\0", 4);
    while (notes.size() >= sizeof(Note)) {
        Note note{};
        std::memcpy(&note, notes.data(), sizeof(Note));
        if (note.n_namesz > notes.size()) {
            return {};
        }
        const std::size_t content = roundedUp(sizeof(Note) + note.n_namesz, alignment);
        if (content > notes.size() || note.n_descsz > notes.size() - content) {
            return {};
        }
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == kOwner.size() &&
            std::memcmp(&notes[sizeof(Note)], kOwner.data(), kOwner.size()) == 0) {
            return notes.subspan(content, note.n_descsz);
        }
        notes =
            notes.subspan(std::min(notes.size(), roundedUp(content + note.n_descsz, alignment)));
    }
    return {};
}

ElfImage::Dynamic ElfImage::dynamic() const noexcept
{
    Dynamic tables;
    std::uintptr_t entries = 0;
    for (std::size_t index = 0; m_isValid && index < m_segmentCount; ++index) {
        const auto segment = valueAt<Segment>(placeOfSegment(index));
        if (segment.p_type == PT_DYNAMIC) {
            entries = m_bias + segment.p_vaddr;
        }
    }
    for (std::size_t index = 0; entries != 0 && index < kMostDynamicEntries; ++index) {
        const auto entry = valueAt<DynamicEntry>(entries + index * sizeof(DynamicEntry));
        // The dynamic linker puts addresses of the process here; that of the kernel's own library
        // (vdso) are left as they are in the file.
        const std::uintptr_t address =
            entry.d_un.d_ptr < m_start ? m_bias + entry.d_un.d_ptr : entry.d_un.d_ptr;
        switch (entry.d_tag) {
        case DT_NULL:
            return tables;
        case DT_SYMTAB:
            tables.symbols = address;
            break;
        case DT_STRTAB:
            tables.strings = address;
            break;
        case DT_STRSZ:
            tables.stringsSize = entry.d_un.d_val;
            break;
        case DT_GNU_HASH:
            tables.gnuHash = address;
            break;
        case DT_HASH:
            tables.hash = address;
            break;
        default:
            break;
        }
    }
    return tables;
}

/// The table of symbols does not say its own length; the hash tables over it do.
std::size_t ElfImage::countSymbols(const Dynamic& tables) const noexcept
{
    constexpr std::size_t kWord = sizeof(std::uint32_t);
    if (tables.gnuHash == 0) {
        return tables.hash == 0 ? 0 : valueAt<std::uint32_t>(tables.hash + kWord);
    }
    const std::size_t bucketCount = valueAt<std::uint32_t>(tables.gnuHash);
    const std::size_t firstHashed = valueAt<std::uint32_t>(tables.gnuHash + kWord);
    const std::size_t filterWords = valueAt<std::uint32_t>(tables.gnuHash + 2 * kWord);
    const std::uintptr_t buckets =
        tables.gnuHash + 4 * kWord + filterWords * sizeof(std::uintptr_t);
    const std::uintptr_t chains = buckets + bucketCount * kWord;
    if (bucketCount > kMostSymbols || !holds(buckets, bucketCount * kWord)) {
        return 0;
    }
    std::size_t last = 0;
    for (std::size_t bucket = 0; bucket < bucketCount; ++bucket) {
        last = std::max<std::size_t>(last, valueAt<std::uint32_t>(buckets + bucket * kWord));
    }
    if (last < firstHashed) {
        return firstHashed;
    }
    // The lowest bit ends a chain.
    while (last < kMostSymbols && holds(chains + (last - firstHashed) * kWord, kWord) &&
           valueAt<std::uint32_t>(chains + (last - firstHashed) * kWord) % 2 == 0) {
        ++last;
    }
    return last + 1;
}

ElfImage::Symbol ElfImage::symbolAt(std::uintptr_t address) const noexcept
{
    const Dynamic tables = dynamic();
    const std::span<const std::uint8_t> strings = bytes(tables.strings, tables.stringsSize);
    const std::size_t count = std::min(countSymbols(tables), kMostSymbols);
    const std::uintptr_t wanted = address - m_bias;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uintptr_t place = tables.symbols + index * sizeof(SymbolEntry);
        if (!holds(place, sizeof(SymbolEntry))) {
            break;
        }
        const auto symbol = valueAt<SymbolEntry>(place);
        const bool isWithin =
            wanted >= symbol.st_value && wanted - symbol.st_value < symbol.st_size;
        if (isFunction(symbol) && isWithin && symbol.st_name < strings.size()) {
            const auto rest = strings.subspan(symbol.st_name);
            const auto length = std::ranges::find(rest, std::uint8_t{0}) - rest.begin();
            return {{reinterpret_cast<const char*>(rest.data()), static_cast<std::size_t>(length)},
                    wanted - symbol.st_value};
        }
    }
    return {};
}
