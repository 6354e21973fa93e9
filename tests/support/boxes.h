// Stands in for the platform's message boxes in the programs that are linked with it, on both systems.
#pragma once

#include <cstdint>
#include <string>

/// The boxes shown: "title: text STYLE", the style in hexadecimal, and " (icon)" behind it for an icon of the program.
extern std::string ShownBoxes;
/// The button that boxes give.
extern std::int32_t BoxAnswer;
/// Whether the last popup of any owner can be seen.
extern bool PopupIsVisible;
