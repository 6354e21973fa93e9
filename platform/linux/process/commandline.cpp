#include "platform/linux/process/commandline.h"

#include "platform/linux/text/nativetext.h"
#include <algorithm>

namespace Platform {

namespace {

// Quotes are harmless, a missing one is not: only a word of plain characters goes without. White space beyond ASCII
// splits as well.
bool NeedsQuotes(const std::u16string& word) {
    return word.empty() ||
           std::any_of(word.begin(), word.end(), [](char16_t c) { return c <= u' ' || c == u'"' || c >= 0x7F; });
}

} // namespace

std::u16string JoinArguments(int count, const char* const* arguments) {
    std::u16string line;
    for (int i = 0; i < count; ++i) {
        const std::u16string word = WideName(arguments[i]);
        if (i > 0) {
            line += u' ';
        }
        if (!NeedsQuotes(word)) {
            line += word;
            continue;
        }
        line += u'"';
        for (const char16_t c : word) {
            line.append(c == u'"' ? 2 : 1, c);
        }
        line += u'"';
    }
    return line;
}

} // namespace Platform
