#include "platform/linux/codepagestable.h"

#include "platform/linux/codepagesfit.h"
#include <algorithm>
#include <atomic>
#include <iconv.h>
#include <iterator>
#include <memory>
#include <mutex>

namespace Platform {

/// The C library's converter from one page to UTF-16, one character at a time.
class PageReader {
public:
    explicit PageReader(const char* name) : handle(iconv_open("UTF-16LE", name)) {}
    ~PageReader() {
        if (IsOpen()) {
            iconv_close(handle);
        }
    }
    PageReader(const PageReader&) = delete;
    PageReader& operator=(const PageReader&) = delete;

    bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle) != -1; }

    /// The character that exactly these bytes make, or `otherwise`.
    char16_t Read(std::string_view bytes, char16_t otherwise) {
        unsigned char unit[4] = {};
        auto* in = const_cast<char*>(bytes.data());
        auto* out = reinterpret_cast<char*>(unit);
        std::size_t inLeft = bytes.size();
        std::size_t outLeft = sizeof(unit);
        iconv(handle, nullptr, nullptr, nullptr, nullptr);
        // Where marks follow their letters the converter holds a letter back until it is told that the text ends.
        const bool read =
            iconv(handle, &in, &inLeft, &out, &outLeft) == 0 && iconv(handle, nullptr, nullptr, &out, &outLeft) == 0;
        return read && inLeft == 0 && outLeft == 2 ? static_cast<char16_t>(unit[0] | unit[1] << 8) : otherwise;
    }

private:
    iconv_t handle;
};

namespace {

constexpr unsigned FirstC1 = 0x80;
constexpr unsigned AfterC1 = 0xA0;
constexpr std::uint32_t AsciiPage = 20127;

// Pairs without a character of their own that stand for private characters, counted on from `start` over those pairs
// that nothing else has taken.
struct UserArea {
    std::uint32_t page;
    unsigned firstLead, lastLead;
    unsigned firstTrail, lastTrail;
    unsigned gapFirst, gapLast; // trail bytes left out
    char16_t start;
    unsigned count;
};

constexpr UserArea UserAreas[] = {
    {936, 0xAA, 0xAF, 0xA1, 0xFE, 0, 0, 0xE000, 564},        {936, 0xF8, 0xFE, 0xA1, 0xFE, 0, 0, 0xE234, 658},
    {936, 0xA1, 0xA7, 0x40, 0xA0, 0x7F, 0x7F, 0xE4C6, 672},  {936, 0xA2, 0xFE, 0x40, 0xFE, 0x7F, 0x7F, 0xE766, 255},
    {949, 0xC9, 0xC9, 0xA1, 0xFE, 0, 0, 0xE000, 94},         {949, 0xFE, 0xFE, 0xA1, 0xFE, 0, 0, 0xE05E, 94},
    {950, 0xFA, 0xFE, 0x40, 0xFE, 0x7F, 0xA0, 0xE000, 785},  {950, 0x8E, 0xA0, 0x40, 0xFE, 0x7F, 0xA0, 0xE311, 2983},
    {950, 0x81, 0x8D, 0x40, 0xFE, 0x7F, 0xA0, 0xEEB8, 2041}, {1361, 0xD8, 0xD8, 0x31, 0xFE, 0x7F, 0x90, 0xE000, 188},
};

// Single bytes that Windows reads in its own way; NotTaken: it has no character there.
struct OwnByte {
    std::uint32_t page;
    unsigned byte;
    char16_t character;
};
constexpr char16_t NotTaken = u'\uFFFF';
constexpr OwnByte OwnBytes[] = {
    {1255, 0xCA, 0x05BA},    {10000, 0xBD, 0x2126},   {10000, 0xC6, 0x2206},   {10000, 0xF0, NotTaken},
    {21866, 0xAE, 0x045E},   {21866, 0xBE, 0x040E},   {28597, 0xA1, 0x02BD},   {28597, 0xA2, 0x02BC},
    {28597, 0xA4, NotTaken}, {28597, 0xA5, NotTaken}, {28597, 0xAA, NotTaken}, {28598, 0xAF, 0x203E},
    {28598, 0xFD, NotTaken}, {28598, 0xFE, NotTaken},
};

// What a page reads in a single byte: Windows' own reading or else the C library's.
char16_t ReadByte(PageReader& reader, std::uint32_t page, unsigned byte) {
    for (const OwnByte& own : OwnBytes) {
        if (own.page == page && own.byte == byte) {
            return own.character;
        }
    }
    const char bytes[] = {static_cast<char>(byte)};
    return reader.Read({bytes, 1}, NotTaken);
}

// Of two codes for a character the lower is written, unless it lies here: these are only read.
struct ReadOnlyCodes {
    std::uint32_t page;
    unsigned first, last;
};
constexpr ReadOnlyCodes ReadOnly[] = {
    {932, 0xED40, 0xEEFC}, {950, 0xA2A4, 0xA2A7}, {950, 0xA2CC, 0xA2CC}, {950, 0xA2CE, 0xA2CE}};

bool IsReadOnly(std::uint32_t page, unsigned code) {
    return std::any_of(std::begin(ReadOnly), std::end(ReadOnly), [page, code](const ReadOnlyCodes& range) {
        return range.page == page && code >= range.first && code <= range.last;
    });
}

} // namespace

CodePageTable::CodePageTable(const CodePage& codePage) : page(codePage), codes(0x10000), kinds(0x10000, Kind::None) {}

const CodePageTable* CodePageTable::Of(const CodePage& page) {
    static std::atomic<const CodePageTable*> tables[MostCodePages];
    static std::mutex making;
    std::atomic<const CodePageTable*>& place = tables[CodePageIndex(page)];
    if (const CodePageTable* table = place.load(std::memory_order_acquire)) {
        return table;
    }
    const std::lock_guard lock(making);
    if (!place.load(std::memory_order_relaxed)) {
        std::unique_ptr<CodePageTable> table(new CodePageTable(page));
        if (table->Load()) {
            place.store(table.release(), std::memory_order_release);
        }
    }
    return place.load(std::memory_order_relaxed);
}

bool CodePageTable::Load() {
    PageReader reader(page.converter);
    if (!reader.IsOpen()) {
        return false;
    }
    LoadSingleBytes(reader);
    LoadDoubleBytes(reader);
    LoadUserAreas();
    MakeCodes();
    MakeSubstitutes();
    return true;
}

void CodePageTable::LoadSingleBytes(PageReader& reader) {
    for (std::size_t i = 0; i + 1 < page.leadBytes.size(); i += 2) {
        for (unsigned lead = static_cast<unsigned char>(page.leadBytes[i]);
             lead <= static_cast<unsigned char>(page.leadBytes[i + 1]); ++lead) {
            rows.emplace_back().fill(Undefined);
            rowOf[lead] = static_cast<std::uint8_t>(rows.size());
        }
    }
    char16_t nextUndefined = page.undefinedStart;
    for (unsigned byte = 0; byte < ByteValues; ++byte) {
        // ASCII is ASCII, whatever sign of a currency the C library sees in a backslash.
        char16_t c = byte < FirstC1 ? static_cast<char16_t>(byte) : Undefined;
        if (page.number == AsciiPage) {
            c = static_cast<char16_t>(byte & 0x7F);
        } else if (c == Undefined && rowOf[byte] == 0) {
            c = ReadByte(reader, page.number, byte);
        }
        if (c == Undefined && rowOf[byte] == 0) {
            const bool control = byte < AfterC1;
            invalid[byte] = !control;
            c = control ? static_cast<char16_t>(byte) : nextUndefined != 0 ? nextUndefined++ : page.unmapped;
        }
        single[byte] = c;
    }
}

void CodePageTable::LoadDoubleBytes(PageReader& reader) {
    for (unsigned lead = 0; lead < ByteValues; ++lead) {
        Row* row = DoubleRow(lead);
        for (unsigned trail = 0x30; row && trail < ByteValues; ++trail) {
            const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
            (*row)[trail] = reader.Read({bytes, 2}, Undefined);
        }
    }
}

void CodePageTable::LoadUserAreas() {
    for (const UserArea& area : UserAreas) {
        unsigned given = area.page == page.number ? 0 : area.count;
        for (unsigned lead = area.firstLead; lead <= area.lastLead && given < area.count; ++lead) {
            for (unsigned trail = area.firstTrail; trail <= area.lastTrail && given < area.count; ++trail) {
                char16_t& c = (*DoubleRow(lead))[trail];
                if (c == Undefined && (trail < area.gapFirst || trail > area.gapLast)) {
                    c = static_cast<char16_t>(area.start + given++);
                }
            }
        }
    }
}

void CodePageTable::MakeCodes() {
    for (unsigned byte = 0; byte < ByteValues; ++byte) {
        if (rowOf[byte] == 0 && !(invalid[byte] && page.undefinedStart == 0)) {
            AddExact(single[byte], byte);
        }
    }
    for (unsigned lead = 0; lead < ByteValues; ++lead) {
        const Row* row = DoubleRow(lead);
        for (unsigned trail = 0; row && trail < ByteValues; ++trail) {
            const unsigned code = lead << 8 | trail;
            if ((*row)[trail] != Undefined && !IsReadOnly(page.number, code)) {
                AddExact((*row)[trail], code);
            }
        }
    }
}

void CodePageTable::AddExact(char16_t c, unsigned code) {
    if (kinds[c] == Kind::None) {
        kinds[c] = Kind::Exact;
        codes[c] = static_cast<std::uint16_t>(code);
    }
}

void CodePageTable::MakeSubstitutes() {
    const FitPairs pairs = FitPairsOf(page.number);
    AddSubstitutes(pairs.own);
    AddSubstitutes(pairs.family);
    for (char16_t c = u'!'; pairs.fullWidth && c <= u'~'; ++c) {
        AddSubstitute(static_cast<char16_t>(c + 0xFEE0), c);
    }
}

void CodePageTable::AddSubstitutes(std::u16string_view pairs) {
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        AddSubstitute(pairs[i], pairs[i + 1]);
    }
}

void CodePageTable::AddSubstitute(char16_t c, char16_t substitute) {
    if (kinds[c] == Kind::None && kinds[substitute] == Kind::Exact) {
        kinds[c] = Kind::Substitute;
        codes[c] = codes[substitute];
    }
}

DecodedCharacter CodePageTable::Read(std::string_view text) const {
    const auto lead = static_cast<unsigned char>(text[0]);
    const Row* row = DoubleRow(lead);
    if (!row) {
        return {1, !invalid[lead], single[lead]};
    }
    // A lead byte at the end, or before a terminator, stands alone.
    if (text.size() < 2 || text[1] == '\0') {
        return {1, false, page.unmapped};
    }
    const char16_t c = (*row)[static_cast<unsigned char>(text[1])];
    return {2, c != Undefined, c != Undefined ? c : page.unmapped};
}

} // namespace Platform
