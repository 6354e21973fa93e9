// Letters with a mark as one character and as two, for the conversions that compose or decompose on the way.
#pragma once

namespace Platform {

/// The character that `base` and the combining mark `mark` make together; 0 if no code page has such a character.
char16_t Compose(char16_t base, char16_t mark);

/// The base and the mark of a composed character; both 0 for any other.
struct BaseAndMark {
    char16_t base;
    char16_t mark;
};
BaseAndMark Decompose(char16_t composed);

} // namespace Platform
