#include "platform/linux/wildcards.h"

#include "platform/linux/nativetext.h"

namespace Platform {

bool HasWildcards(std::u16string_view pattern) {
    return pattern.find_first_of(u"*?") != std::u16string_view::npos;
}

bool MatchesPattern(std::u16string_view name, std::u16string_view pattern) {
    if (pattern == u"*.*") {
        return true;
    }
    // On a mismatch the last star takes one more character; earlier stars need no second look.
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = std::u16string_view::npos;
    std::size_t starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            starName = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == u'?' || FoldNameCharacter(pattern[p]) == FoldNameCharacter(name[n]))) {
            ++n;
            ++p;
        } else if (star != std::u16string_view::npos) {
            p = star + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') {
        ++p;
    }
    return p == pattern.size();
}

} // namespace Platform
