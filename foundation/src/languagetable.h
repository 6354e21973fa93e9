// The languages that have a number, and the choice among them, for the resource base.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>

namespace Tsx {

constexpr std::uint32_t LanguageCount = 70;

/// A row of zeros is a number that is not used.
struct CLanguageRow {
    std::uint32_t codePage;    // Windows's ANSI page for the language; 0 where it has none, or where any will do
    std::uint16_t primary;     // Windows primary language id
    std::uint16_t sublanguage; // Windows sublanguage id
};

/// By language number.
extern const CLanguageRow LanguageTable[LanguageCount];

constexpr std::uint32_t PrimaryLanguageBits = 10; // of a LANGID; the sublanguage is above

constexpr std::uint32_t GetLanguageId(const CLanguageRow& row) {
    return row.primary | std::uint32_t{row.sublanguage} << PrimaryLanguageBits;
}

using CLanguageSet = std::bitset<LanguageCount>;

/// The language that fits a system of that language (a LANGID) and ANSI code page best, in the order of their numbers:
/// of those that can be chosen and that the system supports the first with its primary language, else the first with
/// its code page, else the first. Where none is supported it is the first that can be chosen, and NoLanguage where
/// there is none of the table's.
std::uint32_t ChooseDefaultLanguage(const CLanguageSet& known, const CLanguageSet& supported,
                                    std::uint32_t systemLanguage, std::uint32_t systemCodePage);

} // namespace Tsx
