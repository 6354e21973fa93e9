#include "platform/inc/environment.h"

#include "platform/linux/faulthook.h"
#include "platform/linux/files/fullpath.h"
#include "platform/linux/text/nativetext.h"
#include <string>
#include <string_view>
#include <unistd.h>

namespace Platform {

namespace {

// Null if there is no such variable. The first of several names that differ in case alone is taken.
const char* FindVariable(std::u16string_view name) {
    for (char* const* entry = environ; entry && *entry; ++entry) {
        const std::string_view line = *entry;
        const std::size_t end = line.find('=');
        if (end != std::string_view::npos && NamesEqual(WideName(line.substr(0, end)), name)) {
            return *entry + end + 1;
        }
    }
    return nullptr;
}

// Percent signs pair from the left, also where a pair names no variable and is kept as it stands.
std::u16string Expand(std::u16string_view text) {
    std::u16string expanded;
    while (!text.empty()) {
        const std::size_t end = text.front() == u'%' ? text.find(u'%', 1) : std::u16string_view::npos;
        const std::size_t taken = end == std::u16string_view::npos ? 1 : end + 1;
        const char* value = taken > 1 ? FindVariable(text.substr(1, taken - 2)) : nullptr;
        expanded += value ? WideName(value) : std::u16string(text.substr(0, taken));
        text.remove_prefix(taken);
    }
    return expanded;
}

} // namespace

std::uint32_t ExpandEnvironmentStrings(const char16_t* text, char16_t* buffer, std::uint32_t size) {
    PLATFORM_FAULT(ExpandEnvironmentStrings, 0);
    const std::u16string expanded = Expand(text);
    CopyPath(expanded, size, buffer);
    return static_cast<std::uint32_t>(expanded.size()) + 1;
}

} // namespace Platform
