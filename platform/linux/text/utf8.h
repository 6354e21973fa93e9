// The one decoder and the one encoder of UTF-8. Both read whole words of ASCII or of two-byte characters at a time,
// write straight to where the result belongs, and count by the same loop that converts, so that a size asked for and a
// conversion cannot disagree. What becomes of malformed text is the caller's matter.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Platform {

constexpr char16_t ReplacementCharacter = u'\uFFFD';

struct Utf8Piece {
    std::size_t size; // bytes taken: a whole character, or the beginning of one that is malformed
    bool valid;
    char32_t character;
};

/// Reads the character at the start of a text that isn't empty. A malformed piece ends before the first byte that
/// cannot continue it; a second byte that continues the lead byte but makes the form overlong, a surrogate or too large
/// belongs to the piece.
Utf8Piece ReadUtf8(std::string_view text);

constexpr bool IsHighSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xDC00;
}
constexpr bool IsLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c < 0xE000;
}
constexpr char32_t JoinSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

/// Where a conversion puts its units: into a buffer of fixed size.
template <class TUnit>
class UnitWriter {
public:
    UnitWriter(TUnit* buffer, std::size_t size) : first(buffer), at(buffer), end(buffer + size) {}

    bool HasRoom(std::size_t count) const { return static_cast<std::size_t>(end - at) >= count; }
    std::size_t Size() const { return static_cast<std::size_t>(at - first); }
    bool Put(TUnit unit) {
        if (at == end) {
            return false;
        }
        *at++ = unit;
        return true;
    }
    /// Writes a whole block, of which `count` units are meant. The caller has made sure of the room.
    template <class TBlock>
    void PutBlock(const TBlock& block, std::size_t count) {
        std::memcpy(at, &block, sizeof(block));
        at += count;
    }
    /// Writes the blocks one after the other, each in full. The bits of `counts` say for how many units a block stands
    /// besides the `least` of each: no branch that a processor could mispredict.
    template <class TBlock, std::size_t Size>
    void PutBlocks(const TBlock (&blocks)[Size], std::size_t least, unsigned counts) {
        TUnit* next = at;
        for (const TBlock& block : blocks) {
            std::memcpy(next, &block, sizeof(block));
            next += least + (counts & 1);
            counts >>= 1;
        }
        at = next;
    }

private:
    TUnit* first;
    TUnit* at;
    TUnit* end;
};

/// Counts the units a conversion would put.
template <class TUnit>
class UnitCounter {
public:
    static constexpr bool HasRoom(std::size_t) { return true; }
    std::size_t Size() const { return size; }
    bool Put(TUnit) {
        ++size;
        return true;
    }
    template <class TBlock>
    void PutBlock(const TBlock&, std::size_t count) {
        size += count;
    }
    template <class TBlock, std::size_t Size>
    void PutBlocks(const TBlock (&)[Size], std::size_t least, unsigned counts) {
        size += Size * least + static_cast<std::size_t>(std::popcount(counts));
    }

private:
    std::size_t size = 0;
};

// Runs of ASCII and of two-byte characters by whole vectors. Without such vectors the plain loops below do everything.
namespace Utf8Blocks {

#ifdef __SSE2__
constexpr std::size_t BlockBytes = 16; // of UTF-8; their ASCII are as many units of UTF-16
constexpr unsigned AllBytes = 0xFFFF;
constexpr std::size_t BlockUnits = 16; // of UTF-16

struct TwoVectors {
    __m128i low;
    __m128i high;
};

template <class TUnit>
__m128i Load(const TUnit* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}
inline __m128i EachUnit(int value) {
    return _mm_set1_epi16(static_cast<std::int16_t>(value));
}
inline __m128i HasNone(__m128i units, int bits) {
    return _mm_cmpeq_epi16(_mm_and_si128(units, EachUnit(bits)), _mm_setzero_si128());
}
inline unsigned Mask(__m128i bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

// Puts a block of ASCII and two-byte characters in any order; returns how many bytes it took: all, all but a lead byte
// that is the last, or none where the block holds anything else.
template <class TOut>
[[gnu::always_inline]] inline std::size_t Decode(const char* at, TOut& out) {
    const __m128i block = Load(at);
    const __m128i zero = _mm_setzero_si128();
    const unsigned nonAscii = Mask(block);
    if (nonAscii == 0) {
        out.PutBlock(_mm_unpacklo_epi8(block, zero), BlockBytes / 2);
        out.PutBlock(_mm_unpackhi_epi8(block, zero), BlockBytes / 2);
        return BlockBytes;
    }
    // As signed bytes the continuation bytes are below C0, and the lead bytes C2 to DF are neighbours.
    const unsigned continuation = Mask(_mm_cmplt_epi8(block, _mm_set1_epi8(-0x40)));
    const __m128i fromC2 = _mm_cmpgt_epi8(block, _mm_set1_epi8(-0x3F));
    const unsigned lead = Mask(_mm_and_si128(fromC2, _mm_cmplt_epi8(block, _mm_set1_epi8(-0x20))));
    if ((continuation | lead) != nonAscii || continuation != (lead << 1 & AllBytes)) {
        return 0;
    }
    const __m128i following = _mm_srli_si128(block, 1);
    const auto unitsOf = [](__m128i bytes, __m128i next) {
        const __m128i pair =
            _mm_or_si128(_mm_slli_epi16(_mm_and_si128(bytes, EachUnit(0x1F)), 6), _mm_and_si128(next, EachUnit(0x3F)));
        const __m128i narrow = HasNone(bytes, 0x80);
        return _mm_or_si128(_mm_and_si128(narrow, bytes), _mm_andnot_si128(narrow, pair));
    };
    const TwoVectors values{unitsOf(_mm_unpacklo_epi8(block, zero), _mm_unpacklo_epi8(following, zero)),
                            unitsOf(_mm_unpackhi_epi8(block, zero), _mm_unpackhi_epi8(following, zero))};
    char16_t units[BlockBytes];
    std::memcpy(units, &values, sizeof(units));
    const unsigned cut = lead & 1u << (BlockBytes - 1);
    out.PutBlocks(units, 0, ~(continuation | cut) & AllBytes);
    return cut ? BlockBytes - 1 : BlockBytes;
}

// The way back of sixteen units, or of the first eight: ASCII and two-byte characters in any order. Returns how many
// units were put.
template <class TOut>
[[gnu::always_inline]] inline std::size_t Encode(const char16_t* at, TOut& out) {
    const __m128i block = Load(at);
    const __m128i next = Load(at + BlockUnits / 2);
    if (Mask(HasNone(_mm_or_si128(block, next), 0xFF80)) == AllBytes) {
        out.PutBlock(_mm_packus_epi16(block, next), BlockUnits);
        return BlockUnits;
    }
    if (Mask(HasNone(block, 0xF800)) != AllBytes) {
        return 0;
    }
    const __m128i narrow = HasNone(block, 0xFF80);
    const __m128i pairs =
        _mm_or_si128(EachUnit(0x80C0),
                     _mm_or_si128(_mm_srli_epi16(block, 6), _mm_slli_epi16(_mm_and_si128(block, EachUnit(0x3F)), 8)));
    const __m128i bytes = _mm_or_si128(_mm_and_si128(narrow, block), _mm_andnot_si128(narrow, pairs));
    std::uint16_t words[BlockUnits / 2];
    std::memcpy(words, &bytes, sizeof(words));
    out.PutBlocks(words, 1, ~Mask(_mm_packs_epi16(narrow, narrow)) & 0xFF);
    return BlockUnits / 2;
}

/// Takes as many blocks as `step` converts whole; false when the text ends with them.
template <class TUnit, class TOut, class TStep>
bool TakeBlocks(const TUnit*& text, const TUnit* end, std::size_t blockUnits, TOut& out, TStep step) {
    const TUnit* at = text;
    TOut target = out; // as `at` a copy that stays in registers
    while (static_cast<std::size_t>(end - at) >= blockUnits && target.HasRoom(BlockBytes)) {
        const std::size_t taken = step(at, target);
        if (taken == 0) {
            break;
        }
        at += taken;
    }
    out = target;
    text = at;
    return at != end;
}
#endif

} // namespace Utf8Blocks

/// Puts a character as UTF-16; false if there is no room.
template <class TOut>
bool PutUtf16(TOut& out, char32_t c) {
    if (c < 0x10000) {
        return out.Put(static_cast<char16_t>(c));
    }
    return out.HasRoom(2) && out.Put(static_cast<char16_t>(0xD7C0 + (c >> 10))) &&
           out.Put(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
}

/// Puts a character, also a surrogate, as UTF-8; false if there is no room.
template <class TOut>
bool PutUtf8(TOut& out, char32_t c) {
    const auto put = [&out](char32_t byte) {
        return out.Put(static_cast<char>(byte));
    };
    const auto putContinuation = [&](int shift) {
        return put(0x80 | (c >> shift & 0x3F));
    };
    if (c < 0x80) {
        return put(c);
    }
    if (c < 0x800) {
        return out.HasRoom(2) && put(0xC0 | c >> 6) && putContinuation(0);
    }
    if (c < 0x10000) {
        return out.HasRoom(3) && put(0xE0 | c >> 12) && putContinuation(6) && putContinuation(0);
    }
    return out.HasRoom(4) && put(0xF0 | c >> 18) && putContinuation(12) && putContinuation(6) && putContinuation(0);
}

/// Decodes a text into `out`. `malformed(out, bytes)` is called for each malformed piece. False as soon as that call or
/// the room in `out` says so.
template <class TOut, class TMalformed>
bool DecodeUtf8(std::string_view text, TOut& out, TMalformed malformed) {
    const char* at = text.data();
    const char* const end = at + text.size();
    TOut target = out; // a copy that no byte written can alias
    bool good = true;
    while (good && at != end) {
#ifdef __SSE2__
        if (!Utf8Blocks::TakeBlocks(at, end, Utf8Blocks::BlockBytes, target,
                                    [](const char* block, TOut& to) { return Utf8Blocks::Decode(block, to); })) {
            break;
        }
#endif
        const std::string_view rest(at, static_cast<std::size_t>(end - at));
        const Utf8Piece piece = ReadUtf8(rest);
        good = piece.valid ? PutUtf16(target, piece.character) : malformed(target, rest.substr(0, piece.size));
        at += piece.size;
    }
    out = target;
    return good;
}

/// Encodes a text into `out`. `lone(out, unit)` is called for each surrogate without its partner. False as soon as that
/// call or the room in `out` says so.
template <class TOut, class TLone>
bool EncodeUtf8(std::u16string_view text, TOut& out, TLone lone) {
    const char16_t* at = text.data();
    const char16_t* const end = at + text.size();
    TOut target = out;
    bool good = true;
    while (good && at != end) {
#ifdef __SSE2__
        if (!Utf8Blocks::TakeBlocks(at, end, Utf8Blocks::BlockUnits, target,
                                    [](const char16_t* block, TOut& to) { return Utf8Blocks::Encode(block, to); })) {
            break;
        }
#endif
        const char32_t c = *at++;
        if (IsHighSurrogate(c) && at != end && IsLowSurrogate(*at)) {
            good = PutUtf8(target, JoinSurrogates(c, *at++));
        } else {
            good =
                IsHighSurrogate(c) || IsLowSurrogate(c) ? lone(target, static_cast<char16_t>(c)) : PutUtf8(target, c);
        }
    }
    out = target;
    return good;
}

} // namespace Platform
