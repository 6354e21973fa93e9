// What a module with messages exports: the table that the catalogue asks for names and ids. The program and the
// libraries of other languages are built from this source, each with its own rows.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>

namespace {

constexpr std::u16string_view Names[] = {
#define MESSAGE(name, text) u## #name,
#include RESOURCE_MESSAGES
#undef MESSAGE
};

static_assert(std::ranges::adjacent_find(Names, std::ranges::greater_equal()) == std::end(Names),
              "the rows stand in ascending order of their names' code units, each name once");

constexpr std::uint32_t InterfaceVersion = 200; // of these four functions

} // namespace

extern "C" {

PLATFORM_EXPORT std::uint32_t GetResourceID(const char16_t* name);
PLATFORM_EXPORT std::int32_t NumberOfMessages();
PLATFORM_EXPORT const char16_t* GetMessageName(std::int32_t index);
PLATFORM_EXPORT std::uint32_t GetMessageSystemVersion();

/// The id of a message's string resource; 0 for a name that is not in the table. Case counts.
std::uint32_t GetResourceID(const char16_t* name) {
    const std::u16string_view wanted = name;
    const auto* const place = std::ranges::lower_bound(Names, wanted);
    return place != std::end(Names) && *place == wanted
               ? RESOURCE_FIRST_MESSAGE + static_cast<std::uint32_t>(place - std::begin(Names))
               : 0;
}

std::int32_t NumberOfMessages() {
    return static_cast<std::int32_t>(std::size(Names));
}

/// The name in a row; the caller keeps the index in range.
const char16_t* GetMessageName(std::int32_t index) {
    return Names[index].data(); // a literal, so that it is terminated
}

std::uint32_t GetMessageSystemVersion() {
    return InterfaceVersion;
}
}
