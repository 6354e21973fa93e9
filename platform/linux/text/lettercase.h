// The case of letters as in Windows' invariant tables, whatever the locale: what names are compared and hashed by.
#pragma once

namespace Platform {

/// The other case of a letter, any other character as it is. Only letters that are each other's one counterpart have
/// another case, so that no two upper-case letters share a lower-case one or the other way round: the dotted I of
/// Turkish, the long s and the Kelvin sign stay what they are.
char16_t UpcaseCharacter(char16_t c);
char16_t DowncaseCharacter(char16_t c);

} // namespace Platform
