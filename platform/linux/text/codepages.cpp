// The conversions between UTF-16 and the code pages. UTF-8, the one page that this system has by itself, is converted
// here; iconv converts all others.
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/text/utf8.h"
#include <bit>
#include <cerrno>
#include <iconv.h>
#include <limits>
#include <string>

namespace Platform {

namespace {

constexpr std::uint32_t MbErrInvalidChars = 0x8; // MB_ERR_INVALID_CHARS
constexpr std::uint32_t MbKnownFlags = 0xF;
constexpr std::uint32_t WcErrInvalidChars = 0x80; // WC_ERR_INVALID_CHARS
constexpr std::uint32_t WcKnownFlags = 0x6F0;
constexpr std::uint32_t Gb18030Page = 54936;
constexpr const char* NativeUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// CP_ACP, CP_OEMCP, CP_MACCP and CP_THREAD_ACP stand for pages.
std::uint32_t ResolvePage(std::uint32_t page) {
    constexpr std::uint32_t selected[] = {CodePageUtf8, CodePageUtf8, 10000, CodePageUtf8};
    return page < std::size(selected) ? selected[page] : page;
}

// The name of a page for iconv: CP and its number, but for those that iconv knows by their standards.
std::string ConverterName(std::uint32_t page) {
    struct NamedPage {
        std::uint32_t number;
        const char* name;
    };
    constexpr NamedPage named[] = {
        {10000, "MACINTOSH"},     {20127, "US-ASCII"},      {20866, "KOI8-R"},      {21866, "KOI8-U"},
        {50220, "ISO-2022-JP"},   {50221, "ISO-2022-JP-3"}, {50225, "ISO-2022-KR"}, {50227, "ISO-2022-CN"},
        {50222, "ISO-2022-JP-3"}, {51932, "EUC-JP"},        {51936, "EUC-CN"},      {51949, "EUC-KR"},
        {Gb18030Page, "GB18030"}, {65000, "UTF-7"},
    };
    for (const NamedPage& row : named) {
        if (row.number == page) {
            return row.name;
        }
    }
    constexpr std::uint32_t latin1 = 28591;
    constexpr std::uint32_t latin10 = 28606;
    if (page >= latin1 && page <= latin10) {
        return "ISO-8859-" + std::to_string(page - latin1 + 1);
    }
    return "CP" + std::to_string(page);
}

// UTF-8 and GB 18030 take no flag but the one that refuses invalid text, UTF-7 and the pages of ISO 2022 none at all.
std::uint32_t KnownFlags(std::uint32_t page, std::uint32_t all, std::uint32_t invalidCheck) {
    if (page == CodePageUtf8 || page == Gb18030Page) {
        return invalidCheck;
    }
    return page == 65000 || (page >= 50220 && page <= 50229) ? 0 : all;
}

// What is wrong with the arguments of a conversion, if anything is.
std::uint32_t ArgumentError(const void* text, std::int32_t length, const void* buffer, std::int32_t size,
                            std::uint32_t unknownFlags) {
    if (!text || length == 0 || size < 0 || (!buffer && size > 0)) {
        return ErrorInvalidParameter;
    }
    return unknownFlags != 0 ? ErrorInvalidFlags : ErrorSuccess;
}

template <class TUnit>
std::basic_string_view<TUnit> Source(const TUnit* text, std::int32_t length) {
    using Traits = std::char_traits<TUnit>;
    return {text, length < 0 ? Traits::length(text) + 1 : static_cast<std::size_t>(length)};
}

// A conversion's result: its size, or 0 with the last error set.
std::int32_t Converted(std::size_t size) {
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    return size <= most ? static_cast<std::int32_t>(size) : Fail(ErrorNotEnoughMemory, 0);
}

// `convert(out, refused)` runs into the caller's buffer, or into a counter when only the size is asked for.
template <class TUnit, class TConversion>
std::int32_t ConvertUtf8(TUnit* buffer, std::int32_t size, TConversion convert) {
    bool refused = false;
    if (size == 0) {
        UnitCounter<TUnit> counter;
        convert(counter, refused);
        return refused ? Fail(ErrorNoUnicodeTranslation, 0) : Converted(counter.Size());
    }
    UnitWriter<TUnit> writer(buffer, static_cast<std::size_t>(size));
    if (convert(writer, refused)) {
        return Converted(writer.Size());
    }
    return Fail(refused ? ErrorNoUnicodeTranslation : ErrorInsufficientBuffer, 0);
}

std::int32_t FromUtf8(std::string_view text, bool refuseInvalid, char16_t* buffer, std::int32_t size) {
    return ConvertUtf8(buffer, size, [&](auto& out, bool& refused) {
        return DecodeUtf8(text, out, [&](auto& target, std::string_view) {
            refused = refuseInvalid;
            return !refused && target.Put(ReplacementCharacter);
        });
    });
}

std::int32_t ToUtf8(std::u16string_view text, bool refuseInvalid, char* buffer, std::int32_t size) {
    return ConvertUtf8(buffer, size, [&](auto& out, bool& refused) {
        return EncodeUtf8(text, out, [&](auto& target, char16_t) {
            refused = refuseInvalid;
            return !refused && PutUtf8(target, ReplacementCharacter);
        });
    });
}

// One conversion by iconv. It counts all that it writes and stores as much as the caller's buffer takes, so that
// invalid text is found wherever it stands.
template <class TFrom, class TTo>
class Converter {
public:
    Converter(const char* to, const char* from, TTo* buffer, std::int32_t bufferSize)
        : handle(iconv_open(to, from)), out(buffer), room(static_cast<std::size_t>(bufferSize)) {}
    ~Converter() {
        if (IsOpen()) {
            iconv_close(handle);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // The result of the platform function.
    std::int32_t Convert(std::basic_string_view<TFrom> text, bool refuseInvalid) {
        if (!IsOpen()) {
            return Fail(ErrorInvalidParameter, 0);
        }
        while (!text.empty()) {
            if (Step(text)) {
                continue;
            }
            if (refuseInvalid) {
                return Fail(ErrorNoUnicodeTranslation, 0);
            }
            text.remove_prefix(1);
            PutDefaultCharacter();
        }
        Finish();
        return room != 0 && size > room ? Fail(ErrorInsufficientBuffer, 0) : Converted(size);
    }

private:
    static constexpr std::size_t Failed = static_cast<std::size_t>(-1);

    bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle) != -1; }

    // Takes what it can convert off the start of a text; false where the next character can't be converted.
    bool Step(std::basic_string_view<TFrom>& text) {
        TTo chunk[256];
        auto* in = reinterpret_cast<char*>(const_cast<TFrom*>(text.data()));
        std::size_t inLeft = text.size() * sizeof(TFrom);
        auto* next = reinterpret_cast<char*>(chunk);
        std::size_t chunkLeft = sizeof(chunk);
        const bool full = iconv(handle, &in, &inLeft, &next, &chunkLeft) == Failed && errno == E2BIG;
        text.remove_prefix(text.size() - inLeft / sizeof(TFrom));
        Put({chunk, std::size(chunk) - chunkLeft / sizeof(TTo)});
        return full || text.empty();
    }
    // Writes the letter that a mark could still have joined, and the way back to the initial shift state.
    void Finish() {
        TTo chunk[16];
        auto* next = reinterpret_cast<char*>(chunk);
        std::size_t chunkLeft = sizeof(chunk);
        iconv(handle, nullptr, nullptr, &next, &chunkLeft);
        Put({chunk, std::size(chunk) - chunkLeft / sizeof(TTo)});
    }
    void Put(std::basic_string_view<TTo> units) {
        if (size + units.size() <= room) {
            units.copy(out + size, units.size());
        }
        size += units.size();
    }
    void PutDefaultCharacter() {
        if constexpr (sizeof(TTo) == sizeof(char16_t)) {
            Put(u"?");
        } else {
            std::u16string_view text = u"?";
            Step(text); // converted as well: the page may be in another shift state than that of ASCII
        }
    }

    iconv_t handle;
    TTo* out;
    std::size_t room;
    std::size_t size = 0;
};

} // namespace

std::int32_t WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* text, std::int32_t length,
                                 char* buffer, std::int32_t size) {
    PLATFORM_FAULT(WideCharToMultiByte, 0);
    const std::uint32_t page = ResolvePage(codePage);
    const std::uint32_t unknownFlags = flags & ~KnownFlags(page, WcKnownFlags, WcErrInvalidChars);
    if (const std::uint32_t error = ArgumentError(text, length, buffer, size, unknownFlags)) {
        return Fail(error, 0);
    }
    const bool refuseInvalid = (flags & WcErrInvalidChars) != 0;
    if (page == CodePageUtf8) {
        return ToUtf8(Source(text, length), refuseInvalid, buffer, size);
    }
    Converter<char16_t, char> converter(ConverterName(page).c_str(), NativeUtf16, buffer, size);
    return converter.Convert(Source(text, length), refuseInvalid && page == Gb18030Page); // no effect on other pages
}

std::int32_t MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* text, std::int32_t length,
                                 char16_t* buffer, std::int32_t size) {
    PLATFORM_FAULT(MultiByteToWideChar, 0);
    const std::uint32_t page = ResolvePage(codePage);
    const std::uint32_t unknownFlags = flags & ~KnownFlags(page, MbKnownFlags, MbErrInvalidChars);
    if (const std::uint32_t error = ArgumentError(text, length, buffer, size, unknownFlags)) {
        return Fail(error, 0);
    }
    const bool refuseInvalid = (flags & MbErrInvalidChars) != 0;
    if (page == CodePageUtf8) {
        return FromUtf8(Source(text, length), refuseInvalid, buffer, size);
    }
    Converter<char, char16_t> converter(NativeUtf16, ConverterName(page).c_str(), buffer, size);
    return converter.Convert(Source(text, length), refuseInvalid);
}

} // namespace Platform
