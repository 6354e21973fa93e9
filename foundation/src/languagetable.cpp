#include "foundation/src/languagetable.h"

#include "foundation/inc/resourceinfo.h"

namespace Tsx {

// constinit: a language may be chosen while other static objects come up.
constinit const CLanguageRow LanguageTable[LanguageCount] = {
    // clang-format off
    {0, 0x09, 1}, // 0 English
    {1251, 0x19, 1}, // 1 Russian
    {1252, 0x07, 1}, // 2 German
    {1252, 0x0C, 1}, // 3 French
    {1251, 0x22, 1}, // 4 Ukrainian
    {1252, 0x0A, 1}, // 5 Spanish
    {1252, 0x10, 1}, // 6 Italian
    {1252, 0x13, 1}, // 7 Dutch
    {1252, 0x06, 1}, // 8 Danish
    {1252, 0x1D, 1}, // 9 Swedish
    {1252, 0x0B, 1}, // 10 Finnish
    {1252, 0x14, 1}, // 11 Norwegian
    {}, // 12
    {1252, 0x16, 2}, // 13 Portuguese
    {1250, 0x1B, 1}, // 14 Slovak
    {1250, 0x15, 1}, // 15 Polish
    {1250, 0x05, 1}, // 16 Czech
    {1250, 0x0E, 1}, // 17 Hungarian
    {1257, 0x27, 1}, // 18 Lithuanian
    {1257, 0x26, 1}, // 19 Latvian
    {1257, 0x25, 1}, // 20 Estonian
    {1252, 0x0F, 1}, // 21 Icelandic
    {1253, 0x08, 1}, // 22 Greek
    {1251, 0x02, 1}, // 23 Bulgarian
    {1254, 0x1F, 1}, // 24 Turkish
    {0, 0x44, 1}, // 25 Tatar
    {0, 0x11, 1}, // 26 Japanese
    {1252, 0x16, 1}, // 27 Portuguese, Brazil
    {1252, 0x13, 2}, // 28 Dutch, Belgium
    {1255, 0x0D, 1}, // 29 Hebrew
    {}, {}, {}, {}, // 30 to 33
    {0, 0x39, 1}, // 34 Hindi
    {1251, 0x1A, 3}, // 35 Serbian, Cyrillic
    {1250, 0x1A, 1}, // 36 Croatian
    {1250, 0x18, 1}, // 37 Romanian
    {1250, 0x24, 1}, // 38 Slovenian
    {1252, 0x03, 1}, // 39 Catalan
    {1251, 0x2F, 1}, // 40 Macedonian
    {}, // 41
    {1251, 0x3F, 1}, // 42 Kazakh
    {1250, 0x1A, 2}, // 43 Serbian, Latin
    {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, // 44 to 61
    {1258, 0x2A, 1}, // 62 Vietnamese
    {0, 0x12, 1}, // 63 Korean
    {0, 0x04, 2}, // 64 Chinese, simplified
    {0, 0x04, 1}, // 65 Chinese, traditional
    {}, {}, {}, // 66 to 68
    {0, 0x1E, 1}, // 69 Thai
    // clang-format on
};

namespace {

// The first language of a set that a condition holds for; NoLanguage if there is none.
template <class TCondition>
std::uint32_t FindFirst(const CLanguageSet& languages, TCondition holds) {
    for (std::uint32_t language = 0; language < LanguageCount; ++language) {
        if (languages[language] && holds(LanguageTable[language])) {
            return language;
        }
    }
    return NoLanguage;
}

} // namespace

std::uint32_t ChooseDefaultLanguage(const CLanguageSet& known, const CLanguageSet& supported,
                                    std::uint32_t systemLanguage, std::uint32_t systemCodePage) {
    constexpr std::uint32_t primaryMask = (1U << PrimaryLanguageBits) - 1;
    const CLanguageSet candidates = known & supported;
    const auto any = [](const CLanguageRow&) {
        return true;
    };
    std::uint32_t found = FindFirst(candidates, [systemLanguage](const CLanguageRow& row) {
        return row.primary == (systemLanguage & primaryMask);
    });
    if (found == NoLanguage) {
        found =
            FindFirst(candidates, [systemCodePage](const CLanguageRow& row) { return row.codePage == systemCodePage; });
    }
    if (found == NoLanguage) {
        found = FindFirst(candidates, any);
    }
    return found != NoLanguage ? found : FindFirst(known, any);
}

} // namespace Tsx
