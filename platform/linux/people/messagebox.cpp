#include "platform/inc/messagebox.h"

#include "platform/linux/people/standarderror.h"

namespace Platform {

std::int32_t MessageBox(Window, const char16_t* text, const char16_t* title, std::uint32_t) noexcept {
    WriteToStandardError({title, u": ", text, u"\n"});
    return 0;
}

std::int32_t MessageBoxIndirect(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style, Module,
                                const char16_t*) {
    return MessageBox(owner, text, title, style);
}

Window GetLastActivePopup(Window owner) {
    return owner;
}

bool IsWindowVisible(Window) {
    return false;
}

} // namespace Platform
