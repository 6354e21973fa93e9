// Matching of names against search patterns, by the rules of the Windows search. Case is ignored.
//
//   *      any text
//   *.*    every name, with a dot or without
//   ?      one character, or none before a dot and at the end: "???.txt" finds "a.txt"
//   *.     at the end: names without a dot
//   *.x    what ends in ".x"; the star stops at the last dot
//   a.*    "a" too: a dot before a wildcard may be missing at the end of a name
#pragma once

#include <string>
#include <string_view>

namespace Platform {

bool HasWildcards(std::u16string_view pattern);

/// The form of a pattern that MatchesExpression takes. `endsInDot`: a dot stood behind it, which the path has lost.
std::u16string SearchExpression(std::u16string_view pattern, bool endsInDot);

bool MatchesExpression(std::u16string_view name, std::u16string_view expression);

} // namespace Platform
