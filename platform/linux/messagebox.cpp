#include "platform/inc/messagebox.h"

#include "platform/linux/nativetext.h"
#include <cstddef>
#include <cstdio>

namespace Platform {

std::int32_t MessageBox(Window, const char16_t* text, const char16_t* title, std::uint32_t style) {
    const std::string notice = Utf8Text(title) + ": " + Utf8Text(text) + "\n";
    std::fputs(notice.c_str(), stderr);
    constexpr std::int32_t firstButtons[] = {IdOk, IdOk, IdAbort, IdYes, IdYes, IdRetry};
    const std::size_t buttons = style & 0xF;
    return buttons < std::size(firstButtons) ? firstButtons[buttons] : IdOk;
}

} // namespace Platform
