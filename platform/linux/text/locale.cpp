#include "platform/inc/locale.h"

#include "platform/linux/faulthook.h"
#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace Platform {

namespace {

struct Language {
    std::string_view locale; // a language, with "_" and the country or "@" and the variant where they matter
    std::uint32_t lcid;
};

// A language by itself stands for its chief country and script, behind those that are named.
constexpr Language Languages[] = {
    {"bg", 0x402},       {"ca", 0x403},    {"cs", 0x405},    {"da", 0x406},     {"de_AT", 0xC07},  {"de_CH", 0x807},
    {"de", 0x407},       {"el", 0x408},    {"en_AU", 0xC09}, {"en_CA", 0x1009}, {"en_GB", 0x809},  {"en", 0x409},
    {"es", 0xC0A},       {"et", 0x425},    {"fi", 0x40B},    {"fr_CA", 0xC0C},  {"fr_CH", 0x100C}, {"fr", 0x40C},
    {"he", 0x40D},       {"hi", 0x439},    {"hr", 0x41A},    {"hu", 0x40E},     {"is", 0x40F},     {"it", 0x410},
    {"ja", 0x411},       {"kk", 0x43F},    {"ko", 0x412},    {"lt", 0x427},     {"lv", 0x426},     {"mk", 0x42F},
    {"nb", 0x414},       {"nl_BE", 0x813}, {"nl", 0x413},    {"nn", 0x814},     {"no", 0x414},     {"pl", 0x415},
    {"pt_BR", 0x416},    {"pt", 0x816},    {"ro", 0x418},    {"ru", 0x419},     {"sk", 0x41B},     {"sl", 0x424},
    {"sr@latin", 0x81A}, {"sr", 0xC1A},    {"sv", 0x41D},    {"th", 0x41E},     {"tr", 0x41F},     {"tt", 0x444},
    {"uk", 0x422},       {"vi", 0x42A},    {"zh_TW", 0x404}, {"zh", 0x804},
};

// The name of the locale for messages, as the C library chooses it.
std::string_view LocaleName() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && *value) {
            return value;
        }
    }
    return {};
}

bool Means(std::string_view locale, std::string_view name) {
    const std::size_t variant = std::min(name.find('@'), name.size());
    if (!locale.starts_with(name.substr(0, variant)) || !locale.ends_with(name.substr(variant))) {
        return false;
    }
    constexpr std::string_view ends = "_.@";
    return locale.size() == variant || ends.find(locale[variant]) != std::string_view::npos;
}

} // namespace

std::uint32_t GetUserDefaultLCID() {
    const std::string_view locale = LocaleName();
    for (const Language& row : Languages) {
        if (Means(locale, row.locale)) {
            return row.lcid;
        }
    }
    return LcidEnglishUnitedStates;
}

std::uint32_t GetSystemDefaultLCID() {
    return LcidEnglishUnitedStates;
}

std::uint16_t GetSystemDefaultLangID() {
    return static_cast<std::uint16_t>(GetUserDefaultLCID());
}

bool IsValidLocale(std::uint32_t lcid, std::uint32_t) {
    PLATFORM_FAULT(IsValidLocale, false);
    constexpr std::uint32_t primaryLanguage = 0x3FF; // of a LANGID
    return std::any_of(std::begin(Languages), std::end(Languages), [lcid](const Language& row) {
        return (row.lcid & primaryLanguage) == (lcid & primaryLanguage);
    });
}

} // namespace Platform
