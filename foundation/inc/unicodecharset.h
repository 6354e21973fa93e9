// Sets of wide characters: what strings are trimmed of, digits, what names cannot hold.
#pragma once

#include <cstdint>
#include <string_view>

namespace Tsx {

/// A set of 16-bit characters in two levels: the top 6 bits of a character pick a leaf of 1024 bits, null while none of
/// its characters is a member. Filled at construction; safe to read from any thread after. Raises CMemoryException.
class CUnicodeCharSet {
public:
    explicit CUnicodeCharSet(std::u16string_view members);
    ~CUnicodeCharSet();
    CUnicodeCharSet(const CUnicodeCharSet&) = delete;
    CUnicodeCharSet& operator=(const CUnicodeCharSet&) = delete;

    bool Contains(char16_t c) const {
        const Leaf* leaf = leaves[c >> LeafBits];
        return leaf && (leaf->words[(c & (LeafSize - 1)) / 32] >> (c & 31) & 1) != 0;
    }

    static constexpr unsigned LeafBits = 10;
    static constexpr unsigned LeafSize = 1U << LeafBits; // characters
    static constexpr std::int32_t LeafBytes = LeafSize / 8;

private:
    struct Leaf {
        std::uint32_t words[LeafSize / 32];
    };

    Leaf* leaves[64] = {};

    CUnicodeCharSet() = default;
    void Add(char16_t c);
};

/// 9 to 13, 32, 0x85, 0xA0, 0x1680, 0x2000 to 0x200A, 0x2028, 0x2029, 0x202F, 0x3000.
extern const CUnicodeCharSet WhiteSpaceChars;
/// The digits 0 to 9.
extern const CUnicodeCharSet DigitChars;
/// What a file name cannot hold: * ? < > : " | \ / and the codes 1 to 31. No path operation asks it; it stands for
/// callers who want to.
extern const CUnicodeCharSet InvalidNameChars;

} // namespace Tsx
