#include "platform/linux/text/nativetext.h"

#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/utf8.h"
#include <algorithm>

namespace Platform {

namespace {

// Calls `lone` for each surrogate without its partner and appends every other character.
template <class TLone>
std::string ToUtf8(std::u16string_view text, TLone lone) {
    UnitCounter<char> counter;
    EncodeUtf8(text, counter, lone);
    std::string out(counter.Size(), '\0');
    UnitWriter<char> writer(out.data(), out.size());
    EncodeUtf8(text, writer, lone);
    return out;
}

// Calls `malformed` with the bytes of each malformed piece and appends every whole character. No byte gives more than
// one unit.
template <class TMalformed>
std::u16string ToUtf16(std::string_view text, TMalformed malformed) {
    std::u16string out(text.size(), u'\0');
    UnitWriter<char16_t> writer(out.data(), out.size());
    DecodeUtf8(text, writer, malformed);
    out.resize(writer.Size());
    return out;
}

} // namespace

std::string NativeName(std::u16string_view name) {
    return ToUtf8(name, [](auto& out, char16_t c) {
        return c >= 0xDC80 && c <= 0xDCFF ? out.Put(static_cast<char>(c - 0xDC00)) : PutUtf8(out, c);
    });
}

std::u16string WideName(std::string_view name) {
    return ToUtf16(name, [](auto& out, std::string_view bytes) {
        return std::all_of(bytes.begin(), bytes.end(), [&out](char byte) {
            return out.Put(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(byte)));
        });
    });
}

std::string Utf8Text(std::u16string_view text) {
    return ToUtf8(text, [](auto& out, char16_t) { return PutUtf8(out, ReplacementCharacter); });
}

std::u16string Utf16Text(std::string_view text) {
    return ToUtf16(text, [](auto& out, std::string_view) { return out.Put(ReplacementCharacter); });
}

bool NamesEqual(std::u16string_view a, std::u16string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return UpcaseCharacter(x) == UpcaseCharacter(y); });
}

} // namespace Platform
