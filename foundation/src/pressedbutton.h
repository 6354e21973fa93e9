// The answer of a message box that may not have come up.
#pragma once

#include "foundation/inc/messagehandlers.h"

namespace Tsx {

/// The button that a box of the system gave; the style's default button if there was no box to press one in.
inline std::int32_t PressedButton(std::int32_t answer, std::uint32_t style) {
    return answer != 0 ? answer : GetDefaultButton(style);
}

} // namespace Tsx
