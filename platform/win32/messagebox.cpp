#include "platform/inc/messagebox.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"
#include <initializer_list>

namespace Platform {

namespace {

constexpr const char16_t* UserLibrary = u"user32.dll";

/// To standard error, in the console's code page and in pieces that the stack holds, and to the debugger.
void ShowWithoutBox(const char16_t* text) {
    constexpr int pieceLength = 256;
    constexpr int longestForm = 4; // bytes of one character in any code page
    const UINT codePage = ::GetConsoleOutputCP() != 0 ? ::GetConsoleOutputCP() : CP_ACP;
    const wchar_t* rest = Wide(text);
    int left = ::lstrlenW(rest);
    while (left > 0) {
        char bytes[pieceLength * longestForm];
        const int length = left < pieceLength ? left : pieceLength;
        const int size = ::WideCharToMultiByte(codePage, 0, rest, length, bytes, sizeof(bytes), nullptr, nullptr);
        DWORD written = 0;
        ::WriteFile(::GetStdHandle(STD_ERROR_HANDLE), bytes, static_cast<DWORD>(size), &written, nullptr);
        rest += length;
        left -= length;
    }
    ::OutputDebugStringW(Wide(text));
}

} // namespace

std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style) noexcept {
    auto* show = SystemProcedure<decltype(::MessageBoxW)>(UserLibrary, "MessageBoxW");
    const std::int32_t button = show ? show(Native(owner), Wide(text), Wide(title), style) : 0;
    if (button == 0) {
        for (const char16_t* part : {title, u": ", text, u"\n"}) {
            ShowWithoutBox(part);
        }
    }
    return button;
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
