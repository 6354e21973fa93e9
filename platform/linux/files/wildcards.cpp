#include "platform/linux/files/wildcards.h"

#include "platform/linux/text/lettercase.h"
#include <vector>

namespace Platform {

namespace {

// The wildcards of an expression besides the plain star, by their published names. The characters are of no text:
// those of Windows may stand in names of this system.
constexpr char16_t DosStar = u'\uFDD0'; // any text, but never past the last dot
constexpr char16_t DosQm = u'\uFDD1';   // one character, or none before a dot and at the end
constexpr char16_t DosDot = u'\uFDD2';  // a dot, or nothing at the end

// Whether the expression from `p` on matches the name from `n` on, told from what is known of the rest: `same[p + 1]`
// skips the character of the expression, `next[p]` and `next[p + 1]` use up one of the name.
bool MatchesFrom(std::u16string_view name, std::size_t n, char16_t c, const std::vector<bool>& same,
                 const std::vector<bool>& next, std::size_t p) {
    const bool finished = n == name.size();
    const bool atDot = !finished && name[n] == u'.';
    switch (c) {
    case u'*':
        return same[p + 1] || (!finished && next[p]);
    case DosStar: {
        const bool lastDot = atDot && name.find(u'.', n + 1) == std::u16string_view::npos;
        return same[p + 1] || (!finished && !lastDot && next[p]);
    }
    case DosQm:
        return finished || atDot ? same[p + 1] : next[p + 1];
    case DosDot:
        return finished ? same[p + 1] : atDot && next[p + 1];
    default:
        return !finished && UpcaseCharacter(c) == UpcaseCharacter(name[n]) && next[p + 1];
    }
}

} // namespace

bool HasWildcards(std::u16string_view pattern) {
    return pattern.find_first_of(u"*?") != std::u16string_view::npos;
}

std::u16string SearchExpression(std::u16string_view pattern, bool endsInDot) {
    if (pattern == u"*.*") {
        return u"*";
    }
    std::u16string expression(pattern);
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool dotBefore = i > 0 && pattern[i - 1] == u'.';
        if (pattern[i] == u'.' && i > 0 && pattern[i - 1] == u'*') {
            expression[i - 1] = DosStar;
        }
        if (pattern[i] == u'?') {
            expression[i] = DosQm;
        }
        if (dotBefore && (pattern[i] == u'?' || pattern[i] == u'*')) {
            expression[i - 1] = DosDot;
        }
    }
    if (endsInDot && expression.ends_with(u'*')) {
        expression.back() = DosStar;
    }
    return expression;
}

bool MatchesExpression(std::u16string_view name, std::u16string_view expression) {
    if (expression == u"*") {
        return true;
    }
    std::vector<bool> next(expression.size() + 1, false);
    std::vector<bool> same(expression.size() + 1, false);
    for (std::size_t n = name.size() + 1; n-- > 0;) {
        same[expression.size()] = n == name.size();
        for (std::size_t p = expression.size(); p-- > 0;) {
            same[p] = MatchesFrom(name, n, expression[p], same, next, p);
        }
        next.swap(same);
    }
    return next[0];
}

} // namespace Platform
