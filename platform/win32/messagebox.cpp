#include "platform/inc/messagebox.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

constexpr const char16_t* UserLibrary = u"user32.dll";

} // namespace

std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style) {
    auto* show = SystemProcedure<decltype(::MessageBoxW)>(UserLibrary, "MessageBoxW");
    return show ? show(Native(owner), Wide(text), Wide(title), style) : 0;
}

std::int32_t MessageBoxIndirect(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style,
                                Module module, const char16_t* iconName) {
    auto* show = SystemProcedure<decltype(::MessageBoxIndirectW)>(UserLibrary, "MessageBoxIndirectW");
    MSGBOXPARAMSW parameters{};
    parameters.cbSize = sizeof(parameters);
    parameters.hwndOwner = Native(owner);
    parameters.hInstance = Native(module);
    parameters.lpszText = Wide(text);
    parameters.lpszCaption = Wide(title);
    parameters.dwStyle = style;
    parameters.lpszIcon = Wide(iconName);
    return show ? show(&parameters) : 0;
}

Window GetLastActivePopup(Window owner) {
    auto* ask = SystemProcedure<decltype(::GetLastActivePopup)>(UserLibrary, "GetLastActivePopup");
    return ask ? reinterpret_cast<Window>(ask(Native(owner))) : nullptr;
}

bool IsWindowVisible(Window window) {
    auto* ask = SystemProcedure<decltype(::IsWindowVisible)>(UserLibrary, "IsWindowVisible");
    return ask && ask(Native(window));
}

} // namespace Platform
