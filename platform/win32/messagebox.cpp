#include "platform/inc/messagebox.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style) {
    auto* show = SystemProcedure<decltype(::MessageBoxW)>(u"user32.dll", "MessageBoxW");
    return show ? show(Native(owner), Wide(text), Wide(title), style) : 0;
}

} // namespace Platform
