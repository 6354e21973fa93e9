// Sets of wide characters.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Tsx {

/// A set of 16-bit characters in two levels: the top 6 bits of a character pick a leaf of 1024 bits, absent while it is
/// empty. Filled at construction; safe to read from any thread after.
class CUnicodeCharSet {
public:
    explicit CUnicodeCharSet(std::u16string_view members);

    bool Contains(char16_t c) const {
        const auto& leaf = leaves[c >> LeafBits];
        return leaf && (*leaf)[c & (LeafSize - 1)];
    }

private:
    static constexpr unsigned LeafBits = 10;
    static constexpr std::size_t LeafSize = std::size_t{1} << LeafBits;

    std::array<std::unique_ptr<std::bitset<LeafSize>>, 64> leaves;
};

/// 9 to 13, 32, 0x85, 0xA0, 0x1680, 0x2000 to 0x200A, 0x2028, 0x2029, 0x202F, 0x3000.
extern const CUnicodeCharSet WhiteSpaceChars;
/// The digits 0 to 9.
extern const CUnicodeCharSet DigitChars;

} // namespace Tsx
