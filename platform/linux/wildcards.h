// Matching of names against search patterns.
#pragma once

#include <string_view>

namespace Platform {

bool HasWildcards(std::u16string_view pattern);

/// Whether a name matches a pattern in which `*` stands for any text, `?` for one character, and "*.*" for every name.
/// Case is ignored.
bool MatchesPattern(std::u16string_view name, std::u16string_view pattern);

} // namespace Platform
