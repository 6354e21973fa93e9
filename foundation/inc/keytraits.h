// What a table needs to know of its keys: a 32-bit hash, equality that agrees with it, and how to ask the processor for
// what these two will read behind the key. The hash decides where a key stands in a table, so that the order in which
// tables are walked depends on it.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/text.h"
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace Tsx {

/// h * 33 + c over all characters, from 0; 0 for the empty text.
inline std::uint32_t HashText(std::u16string_view text) {
    // Four characters a step give the same value as one by one, since all arithmetic is modulo 2^32, with one product
    // to wait for instead of four: one by one, look-ups of 20 letters take 1.3 times as long.
    static_assert(std::endian::native == std::endian::little, "the first character is the lowest in a word");
    constexpr std::uint64_t evenCharacters = 0x0000'FFFF'0000'FFFF;
    constexpr std::uint64_t secondPower = std::uint64_t{33} * 33;
    constexpr std::uint32_t fourthPower = 33 * 33 * 33 * 33;
    std::uint32_t hash = 0;
    const char16_t* at = text.data();
    std::size_t left = text.size();
    for (; left >= 4; left -= 4, at += 4) {
        std::uint64_t four = 0;
        std::memcpy(&four, at, sizeof four);
        // Two sums of 32 bits each: c0 * 33 + c1 in the lower half, c2 * 33 + c3 in the upper.
        const std::uint64_t pairs = (four & evenCharacters) * 33 + ((four >> 16) & evenCharacters);
        // The multiplication leaves lower * 33^2 + upper in the upper half.
        hash = hash * fourthPower + static_cast<std::uint32_t>((pairs * ((secondPower << 32) + 1)) >> 32);
    }
    for (; left > 0; --left) {
        hash = hash * 33 + *at++;
    }
    return hash;
}

/// The same over the upper-case characters. Each goes through the run-time, since the locale decides even over ASCII
/// letters.
inline std::uint32_t HashTextNoCase(std::u16string_view text) {
    std::uint32_t hash = 0;
    for (const char16_t c : text) {
        hash = hash * 33 + Platform::towupper(c);
    }
    return hash;
}

/// Asks for a text of up to some 60 bytes with the header in front of it, which often lies over two cache lines.
inline void PrefetchText(const CUnicodeString& text) {
    __builtin_prefetch(text.Text());
    __builtin_prefetch(text.Text() + 16);
}

/// Wide strings, letter by letter.
struct CStringKeyTraits {
    static std::uint32_t Hash(const CUnicodeString& key) { return HashText(key.View()); }
    static void Prefetch(const CUnicodeString& key) { PrefetchText(key); }
    static bool Equal(const CUnicodeString& a, const CUnicodeString& b) {
        if (a.Text() == b.Text()) {
            return true; // one shared block
        }
        return a.Length() == b.Length() &&
               std::memcmp(a.Text(), b.Text(), static_cast<std::size_t>(a.Length()) * sizeof(char16_t)) == 0;
    }
};

/// Wide strings without regard to case: equal where the upper-case characters are, as the hash sees them.
struct CNoCaseStringKeyTraits {
    static std::uint32_t Hash(const CUnicodeString& key) { return HashTextNoCase(key.View()); }
    static void Prefetch(const CUnicodeString& key) { PrefetchText(key); }
    static bool Equal(const CUnicodeString& a, const CUnicodeString& b) {
        if (a.Text() == b.Text()) {
            return true;
        }
        if (a.Length() != b.Length()) {
            return false;
        }
        for (std::int32_t i = 0; i < a.Length(); ++i) {
            if (a[i] != b[i] && Platform::towupper(a[i]) != Platform::towupper(b[i])) {
                return false;
            }
        }
        return true;
    }
};

/// 32-bit numbers, which are their own hash.
struct CNumberKeyTraits {
    template <class TNumber>
    static std::uint32_t Hash(TNumber key) {
        static_assert(std::is_integral_v<TNumber> && sizeof(TNumber) == sizeof(std::uint32_t));
        return static_cast<std::uint32_t>(key);
    }
    template <class TNumber>
    static bool Equal(TNumber a, TNumber b) {
        return a == b;
    }
};

/// Pointers, by their low 32 bits.
struct CPointerKeyTraits {
    static std::uint32_t Hash(const void* key) {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key));
    }
    static bool Equal(const void* a, const void* b) { return a == b; }
};

/// The traits that a table takes where none are named: strings letter by letter.
template <class TKey>
struct CKeyTraits;
template <>
struct CKeyTraits<CUnicodeString> : CStringKeyTraits {};
template <>
struct CKeyTraits<std::int32_t> : CNumberKeyTraits {};
template <class T>
struct CKeyTraits<T*> : CPointerKeyTraits {};

} // namespace Tsx
