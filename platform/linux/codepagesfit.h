// The nearest characters that a code page gives for those it lacks ("best fit").
#pragma once

#include <cstdint>
#include <string_view>

namespace Platform {

/// Pairs of a character and its substitute, in the order of preference: the first substitute counts that the page has
/// itself. '?' as a substitute means that this page has none. The page's own pairs precede those of its family.
struct FitPairs {
    std::u16string_view own;
    std::u16string_view family;
    bool fullWidth; // the full-width forms U+FF01 to U+FF5E stand for ASCII
};

/// Empty lists for a page without substitutes.
FitPairs FitPairsOf(std::uint32_t page);

} // namespace Platform
