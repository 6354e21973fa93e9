#include "platform/linux/codepagesstream.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/utf8.h"
#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <mutex>

namespace Platform {

namespace {

constexpr const char* NativeUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// An open converter, one a page and direction. Opening looks up and loads a library, so that it stays open to the end
// of the process; the lock is held over one conversion, for the converter has a state.
struct Converter {
    std::mutex inUse;
    iconv_t handle = nullptr;

    bool Open(const char* to, const char* from) {
        if (!handle) {
            iconv_t opened = iconv_open(to, from);
            handle = reinterpret_cast<std::intptr_t>(opened) == -1 ? nullptr : opened;
        }
        return handle != nullptr;
    }
};

Converter& ReaderOf(const CodePage& page) {
    static Converter converters[MostCodePages];
    return converters[CodePageIndex(page)];
}

Converter& WriterOf(const CodePage& page) {
    static Converter converters[MostCodePages];
    return converters[CodePageIndex(page)];
}

// Converts `text` into `out`. Where something has no meaning, `replace` is given the rest of the text and says how many
// bytes of it to pass over, 0 to give up.
template <class TReplace>
bool Convert(iconv_t handle, std::string_view text, std::string& out, TReplace replace) {
    char chunk[1024];
    auto* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    for (bool ending = false;;) {
        char* next = chunk;
        std::size_t room = sizeof(chunk);
        ending = ending || inLeft == 0;
        const std::size_t result = iconv(handle, ending ? nullptr : &in, ending ? nullptr : &inLeft, &next, &room);
        const bool full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
        out.append(chunk, sizeof(chunk) - room);
        if (ending && !full) {
            return true;
        }
        if (result == static_cast<std::size_t>(-1) && !full) {
            const std::size_t passed = replace({in, inLeft}, out);
            if (passed == 0) {
                return Fail(ErrorNoUnicodeTranslation);
            }
            in += passed;
            inLeft -= passed;
        }
    }
}

template <class TUnit>
std::string_view AsBytes(std::basic_string_view<TUnit> text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(TUnit)};
}

} // namespace

bool DecodeStream(const CodePage& page, std::string_view text, bool refuseInvalid, std::u16string& out) {
    Converter& converter = ReaderOf(page);
    const std::lock_guard lock(converter.inUse);
    if (!converter.Open(NativeUtf16, page.converter)) {
        return Fail(ErrorInvalidParameter);
    }
    std::string bytes;
    const std::string_view mark = AsBytes(std::u16string_view(&ReplacementCharacter, 1));
    const bool done = Convert(converter.handle, text, bytes, [&](std::string_view, std::string& target) {
        target += mark;
        return refuseInvalid ? std::size_t{0} : std::size_t{1};
    });
    out.resize(bytes.size() / sizeof(char16_t));
    bytes.copy(reinterpret_cast<char*>(out.data()), out.size() * sizeof(char16_t));
    return done;
}

bool EncodeStream(const CodePage& page, std::u16string_view text, bool refuseInvalid, std::string& out) {
    Converter& converter = WriterOf(page);
    const std::lock_guard lock(converter.inUse);
    if (!converter.Open(page.writer ? page.writer : page.converter, NativeUtf16)) {
        return Fail(ErrorInvalidParameter);
    }
    // The substitute goes through the converter, for the page may be shifted away from ASCII when it is needed.
    constexpr char16_t substitute = u'?';
    return Convert(converter.handle, AsBytes(text), out, [&](std::string_view rest, std::string& target) {
        if (refuseInvalid) {
            return std::size_t{0};
        }
        char piece[16];
        char* next = piece;
        std::size_t room = sizeof(piece);
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(&substitute));
        std::size_t inLeft = sizeof(substitute);
        iconv(converter.handle, &in, &inLeft, &next, &room);
        target.append(piece, sizeof(piece) - room);
        return std::min(rest.size(), sizeof(char16_t));
    });
}

} // namespace Platform
