// The matching of names against patterns. The input is UTF-16: the pattern, a line feed, the name.
#include "fuzz/target.h"
#include "fuzz/widetext.h"
#include "platform/linux/files/wildcards.h"

void RunInput(const std::string& bytes) {
    const Tsx::CUnicodeString text = WideText(bytes);
    const std::u16string_view whole = text.View();
    const std::size_t end = whole.find(u'\n');
    if (end == std::u16string_view::npos) {
        return;
    }
    const std::u16string_view pattern = whole.substr(0, end);
    const std::u16string_view name = whole.substr(end + 1);
    for (const bool endsInDot : {false, true}) {
        const std::u16string expression = Platform::SearchExpression(pattern, endsInDot);
        const bool matches = Platform::MatchesExpression(name, expression);
        // Without wildcards it is a comparison, which at least the same text passes.
        Require(matches || Platform::HasWildcards(pattern) || endsInDot || pattern != name);
    }
    Require(Platform::MatchesExpression(name, Platform::SearchExpression(u"*", false)));
}
