#include "platform/linux/codepages.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "platform/linux/codepagesmarks.h"
#include "platform/linux/codepagesstream.h"
#include "platform/linux/codepagestable.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/utf8.h"
#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace Platform {

namespace {

constexpr std::uint32_t MbComposite = 0x2;             // MB_COMPOSITE
constexpr std::uint32_t MbErrInvalidChars = 0x8;       // MB_ERR_INVALID_CHARS
constexpr std::uint32_t MbKnownFlags = 0xF;            // with MB_PRECOMPOSED and MB_USEGLYPHCHARS
constexpr std::uint32_t WcDiscardNonSpacing = 0x10;    // WC_DISCARDNS
constexpr std::uint32_t WcDefaultCharacter = 0x40;     // WC_DEFAULTCHAR
constexpr std::uint32_t WcErrInvalidChars = 0x80;      // WC_ERR_INVALID_CHARS
constexpr std::uint32_t WcCompositeCheck = 0x200;      // WC_COMPOSITECHECK
constexpr std::uint32_t WcNoBestFitCharacters = 0x400; // WC_NO_BEST_FIT_CHARS
constexpr std::uint32_t WcKnownFlags = 0x6F0;          // with WC_SEPCHARS
constexpr std::uint32_t Gb18030Page = 54936;
constexpr unsigned DefaultCharacter = '?';

// UTF-8 and GB 18030 take no flag but the one that refuses invalid text, the pages in streams none at all.
std::uint32_t KnownFlags(const CodePage& page, std::uint32_t all, std::uint32_t invalidCheck) {
    if (page.kind == PageKind::Table) {
        return all;
    }
    return page.kind == PageKind::Utf8 || page.number == Gb18030Page ? invalidCheck : 0;
}

// The page of a conversion whose arguments hold; null with the last error set if they don't.
template <class TFrom, class TTo>
const CodePage* CheckConversion(std::uint32_t codePage, const TFrom* text, std::int32_t length, const TTo* buffer,
                                std::int32_t size) {
    const bool argumentsHold = text && length != 0 && size >= 0 && (buffer || size == 0);
    const CodePage* page = argumentsHold ? FindCodePage(codePage) : nullptr;
    if (!page) {
        SetLastError(ErrorInvalidParameter);
    }
    return page;
}

template <class TUnit>
std::basic_string_view<TUnit> Source(const TUnit* text, std::int32_t length) {
    using Traits = std::char_traits<TUnit>;
    return {text, length < 0 ? Traits::length(text) + 1 : static_cast<std::size_t>(length)};
}

enum class Outcome { Done, NoRoom, Invalid };

// Runs a conversion into the caller's buffer, or into a counter when only the size is asked for.
template <class TUnit, class TConversion>
std::int32_t Deliver(TUnit* buffer, std::int32_t size, TConversion conversion) {
    std::size_t result = 0;
    Outcome outcome = Outcome::Done;
    if (size == 0) {
        UnitCounter<TUnit> counter;
        outcome = conversion(counter);
        result = counter.Size();
    } else {
        UnitWriter<TUnit> writer(buffer, static_cast<std::size_t>(size));
        outcome = conversion(writer);
        result = writer.Size();
    }
    if (outcome == Outcome::Done && result <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return static_cast<std::int32_t>(result);
    }
    if (outcome == Outcome::Invalid) {
        SetLastError(ErrorNoUnicodeTranslation);
    } else {
        SetLastError(outcome == Outcome::NoRoom ? ErrorInsufficientBuffer : ErrorNotEnoughMemory);
    }
    return 0;
}

template <class TUnit>
std::int32_t DeliverWhole(std::basic_string_view<TUnit> converted, TUnit* buffer, std::int32_t size) {
    return Deliver(buffer, size, [converted](auto& out) {
        const bool room = std::all_of(converted.begin(), converted.end(), [&out](TUnit unit) { return out.Put(unit); });
        return room ? Outcome::Done : Outcome::NoRoom;
    });
}

template <class TOut>
Outcome FromUtf8(std::string_view text, bool refuseInvalid, TOut& out) {
    bool refused = false;
    const bool done = DecodeUtf8(text, out, [&](TOut& target, std::string_view) {
        refused = refuseInvalid;
        return !refused && target.Put(ReplacementCharacter);
    });
    return done ? Outcome::Done : refused ? Outcome::Invalid : Outcome::NoRoom;
}

template <class TOut>
Outcome ToUtf8(std::u16string_view text, bool refuseInvalid, TOut& out) {
    bool refused = false;
    const bool done = EncodeUtf8(text, out, [&](TOut& target, char16_t) {
        refused = refuseInvalid;
        return !refused && PutUtf8(target, ReplacementCharacter);
    });
    return done ? Outcome::Done : refused ? Outcome::Invalid : Outcome::NoRoom;
}

// The base first, then the marks from the innermost to the outermost.
template <class TOut>
bool PutDecomposed(TOut& out, char16_t c) {
    const BaseAndMark parts = Decompose(c);
    return parts.base == 0 ? out.Put(c) : PutDecomposed(out, parts.base) && out.Put(parts.mark);
}

// Invalid text is reported before a lack of room, wherever it stands.
template <class TOut>
Outcome FromTable(const CodePageTable& table, std::string_view text, std::uint32_t flags, TOut& out) {
    bool room = true;
    while (!text.empty()) {
        const DecodedCharacter next = table.Read(text);
        if (!next.valid && (flags & MbErrInvalidChars)) {
            return Outcome::Invalid;
        }
        room = room && ((flags & MbComposite) ? PutDecomposed(out, next.character) : out.Put(next.character));
        text.remove_prefix(next.size);
    }
    return room ? Outcome::Done : Outcome::NoRoom;
}

template <class TOut>
bool PutCode(TOut& out, unsigned code) {
    return code <= 0xFF ? out.Put(static_cast<char>(code))
                        : out.HasRoom(2) && out.Put(static_cast<char>(code >> 8)) && out.Put(static_cast<char>(code));
}

// One character a unit, surrogates too. A letter and its mark become one character if the page has it or a substitute
// for it; one mark only, as a second one stands for itself.
template <class TOut>
Outcome ToTable(const CodePageTable& table, std::u16string_view text, std::uint32_t flags, TOut& out) {
    const auto codeOf = [&table, flags](char16_t c) {
        return (flags & WcNoBestFitCharacters) ? table.Exact(c) : table.Nearest(c);
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::optional<unsigned> code = codeOf(text[i]);
        const bool pair = (flags & WcCompositeCheck) && i + 1 < text.size();
        if (const char16_t composed = pair ? Compose(text[i], text[i + 1]) : u'\0') {
            if (const std::optional<unsigned> whole = codeOf(composed)) {
                code = whole;
                ++i;
            } else if (flags & (WcDiscardNonSpacing | WcDefaultCharacter)) {
                code = (flags & WcDiscardNonSpacing) ? code : std::nullopt;
                ++i;
            }
        }
        if (!PutCode(out, code.value_or(DefaultCharacter))) {
            return Outcome::NoRoom;
        }
    }
    return Outcome::Done;
}

} // namespace

std::int32_t WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* text, std::int32_t length,
                                 char* buffer, std::int32_t size) {
    PLATFORM_FAULT(WideCharToMultiByte, 0);
    const CodePage* page = CheckConversion(codePage, text, length, buffer, size);
    if (!page || ((flags & ~KnownFlags(*page, WcKnownFlags, WcErrInvalidChars)) && !Fail(ErrorInvalidFlags))) {
        return 0;
    }
    const std::u16string_view source = Source(text, length);
    const bool refuseInvalid = (flags & WcErrInvalidChars) != 0;
    if (page->kind == PageKind::Utf8) {
        return Deliver(buffer, size, [&](auto& out) { return ToUtf8(source, refuseInvalid, out); });
    }
    if (page->kind == PageKind::Stream) {
        std::string bytes;
        return EncodeStream(*page, source, refuseInvalid, bytes) ? DeliverWhole<char>(bytes, buffer, size) : 0;
    }
    const CodePageTable* table = CodePageTable::Of(*page);
    if (!table) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    return Deliver(buffer, size, [&](auto& out) { return ToTable(*table, source, flags, out); });
}

std::int32_t MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* text, std::int32_t length,
                                 char16_t* buffer, std::int32_t size) {
    PLATFORM_FAULT(MultiByteToWideChar, 0);
    const CodePage* page = CheckConversion(codePage, text, length, buffer, size);
    if (!page || ((flags & ~KnownFlags(*page, MbKnownFlags, MbErrInvalidChars)) && !Fail(ErrorInvalidFlags))) {
        return 0;
    }
    const std::string_view source = Source(text, length);
    const bool refuseInvalid = (flags & MbErrInvalidChars) != 0;
    if (page->kind == PageKind::Utf8) {
        return Deliver(buffer, size, [&](auto& out) { return FromUtf8(source, refuseInvalid, out); });
    }
    if (page->kind == PageKind::Stream) {
        std::u16string units;
        return DecodeStream(*page, source, refuseInvalid, units) ? DeliverWhole<char16_t>(units, buffer, size) : 0;
    }
    const CodePageTable* table = CodePageTable::Of(*page);
    if (!table) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    return Deliver(buffer, size, [&](auto& out) { return FromTable(*table, source, flags, out); });
}

} // namespace Platform
