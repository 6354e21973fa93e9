// What a module with messages exports: the table that the catalogue asks for names and ids. The program and the
// libraries of other languages are built from this source, each with its own rows.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace {

struct MessageRow {
    std::uint32_t id;
    const char16_t* name;
};

// In ascending order of the names' code units.
constexpr MessageRow Rows[] = {
#define MESSAGE(id, name, text) {id, u## #name},
#include RESOURCE_MESSAGES
#undef MESSAGE
};

constexpr bool NameLess(const MessageRow& row, std::u16string_view name) {
    return row.name < name;
}

static_assert(std::is_sorted(std::begin(Rows), std::end(Rows),
                             [](const MessageRow& a, const MessageRow& b) { return NameLess(a, b.name); }));

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
    const MessageRow* row = std::lower_bound(std::begin(Rows), std::end(Rows), wanted, &NameLess);
    return row != std::end(Rows) && row->name == wanted ? row->id : 0;
}

std::int32_t NumberOfMessages() {
    return static_cast<std::int32_t>(std::size(Rows));
}

/// The name in a row; the caller keeps the index in range.
const char16_t* GetMessageName(std::int32_t index) {
    return Rows[index].name;
}

std::uint32_t GetMessageSystemVersion() {
    return InterfaceVersion;
}
}
