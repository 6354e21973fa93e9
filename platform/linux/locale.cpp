#include "platform/inc/locale.h"

#include <cstdlib>
#include <string_view>

namespace Platform {

namespace {

struct Language {
    std::string_view locale;
    std::uint32_t lcid;
};

// A language by itself stands for its chief country, behind those that are named.
constexpr Language Languages[] = {
    {"cs", 0x405},    {"da", 0x406},     {"de_AT", 0xC07}, {"de_CH", 0x807}, {"de", 0x407}, {"el", 0x408},
    {"en_AU", 0xC09}, {"en_CA", 0x1009}, {"en_GB", 0x809}, {"en", 0x409},    {"es", 0xC0A}, {"fi", 0x40B},
    {"fr_CA", 0xC0C}, {"fr_CH", 0x100C}, {"fr", 0x40C},    {"he", 0x40D},    {"hu", 0x40E}, {"it", 0x410},
    {"ja", 0x411},    {"ko", 0x412},     {"nb", 0x414},    {"nl", 0x413},    {"pl", 0x415}, {"pt_BR", 0x416},
    {"pt", 0x816},    {"ru", 0x419},     {"sv", 0x41D},    {"tr", 0x41F},    {"uk", 0x422}, {"zh_TW", 0x404},
    {"zh", 0x804},
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
    constexpr std::string_view ends = "_.@";
    return locale.starts_with(name) &&
           (locale.size() == name.size() || ends.find(locale[name.size()]) != std::string_view::npos);
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

} // namespace Platform
