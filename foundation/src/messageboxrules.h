// What a message box of the foundation looks like, and what its answer stands for.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Tsx {

/// The style in which a box is shown. Without icon bits the styles MbOk, MbOkCancel, MbYesNoCancel and MbYesNo get the
/// exclamation mark; an icon of a module, if there is one, takes the place of any other. Without a visible owner the
/// box comes to the front and stays there.
std::uint32_t GetBoxStyle(std::uint32_t style, Platform::Window owner, const char16_t* iconName);

/// The button that a box of the system gave; the style's default button if no box came up to press it in.
std::int32_t GetPressedButton(std::int32_t answer, std::uint32_t style);

} // namespace Tsx
