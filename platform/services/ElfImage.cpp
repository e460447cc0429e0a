#include "ElfImage.h"

#include "ProcessMemory.h"

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
    m_isReadable = readBlock(start);
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

/// Has the block that `address`, of the image, lies in.
bool ElfImage::readBlock(std::uintptr_t address) const noexcept
{
    if (address - m_known.start < m_known.size) {
        return true;
    }
    const std::uintptr_t block = address / kBlockSize * kBlockSize;
    const std::uintptr_t first = std::max(block, m_start);
    const std::size_t size = std::min(kBlockSize - (first - block), m_end - first);
    const std::span<std::byte> to = std::span(m_block).first(size);
    m_known = {};
    switch (ProcessMemory::copy(first, to)) {
    case ProcessMemory::Outcome::NotThere:
        return false;
    case ProcessMemory::Outcome::Refused: // more often than not it is all there
        std::memcpy(to.data(), reinterpret_cast<const void*>(first), size);
        break;
    case ProcessMemory::Outcome::Copied:
        break;
    }
    m_known = {first, size};
    return true;
}

bool ElfImage::copy(std::uintptr_t address, std::span<std::byte> to) const noexcept
{
    if (!holds(address, to.size())) {
        return false;
    }
    while (!to.empty()) {
        if (!readBlock(address)) {
            return false;
        }
        const std::size_t offset = address - m_known.start;
        const std::size_t count = std::min(to.size(), m_known.size - offset);
        std::copy_n(m_block.begin() + static_cast<std::ptrdiff_t>(offset), count, to.begin());
        address += count;
        to = to.subspan(count);
    }
    return true;
}

/// All zero where the image ends before or cannot be read.
template <class Value>
Value ElfImage::valueAt(std::uintptr_t address) const noexcept
{
    Value value{};
    return copy(address, std::as_writable_bytes(std::span(&value, 1))) ? value : Value{};
}

std::uintptr_t ElfImage::placeOfSegment(std::size_t index) const noexcept
{
    return m_segments + index * sizeof(Segment);
}

std::size_t ElfImage::copyBuildId(std::span<std::uint8_t> buffer) const noexcept
{
    for (std::size_t index = 0; m_isValid && index < m_segmentCount; ++index) {
        const auto segment = valueAt<Segment>(placeOfSegment(index));
        const std::uintptr_t notes = m_bias + segment.p_vaddr;
        if (segment.p_type == PT_NOTE && holds(notes, segment.p_memsz)) {
            const Range found = buildIdIn({notes, segment.p_memsz}, segment.p_align == 8 ? 8 : 4);
            if (found.size > 0 && found.size <= buffer.size() &&
                copy(found.start, std::as_writable_bytes(buffer.first(found.size)))) {
                return found.size;
            }
        }
    }
    return 0;
}

ElfImage::Range ElfImage::buildIdIn(Range notes, std::size_t alignment) const noexcept
{
    constexpr std::array<char, 4> kOwner{'G', 'N', 'U', '\0'};
    while (notes.size >= sizeof(Note)) {
        const auto note = valueAt<Note>(notes.start);
        if (note.n_namesz > notes.size) {
            return {};
        }
        const std::size_t content = roundedUp(sizeof(Note) + note.n_namesz, alignment);
        if (content > notes.size || note.n_descsz > notes.size - content) {
            return {};
        }
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == kOwner.size() &&
            valueAt<std::array<char, 4>>(notes.start + sizeof(Note)) == kOwner) {
            return {notes.start + content, note.n_descsz};
        }
        const std::size_t length =
            std::min(notes.size, roundedUp(content + note.n_descsz, alignment));
        notes = {notes.start + length, notes.size - length};
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

ElfImage::Symbol ElfImage::symbolAt(std::uintptr_t address, std::span<char> buffer) const noexcept
{
    const Dynamic tables = dynamic();
    const bool hasStrings = holds(tables.strings, tables.stringsSize);
    const std::size_t count = hasStrings ? std::min(countSymbols(tables), kMostSymbols) : 0;
    const std::uintptr_t wanted = address - m_bias;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uintptr_t place = tables.symbols + index * sizeof(SymbolEntry);
        if (!holds(place, sizeof(SymbolEntry))) {
            break;
        }
        const auto symbol = valueAt<SymbolEntry>(place);
        const bool isWithin =
            wanted >= symbol.st_value && wanted - symbol.st_value < symbol.st_size;
        if (isFunction(symbol) && isWithin && symbol.st_name < tables.stringsSize) {
            const Range rest{tables.strings + symbol.st_name, tables.stringsSize - symbol.st_name};
            return {copyName(rest, buffer), wanted - symbol.st_value};
        }
    }
    return {};
}

/// What stands in `text` up to its zero byte.
std::string_view ElfImage::copyName(Range text, std::span<char> buffer) const noexcept
{
    std::size_t length = 0;
    while (length < std::min(text.size, buffer.size())) {
        const char character = valueAt<char>(text.start + length);
        if (character == '\0') {
            break;
        }
        buffer[length] = character;
        ++length;
    }
    return {buffer.data(), length};
}
