#include "tests/support/boxes.h"

#include "platform/inc/messagebox.h"
#include "platform/inc/modules.h"
#include "tests/support/text.h"
#include <array>
#include <cstdio>

std::string ShownBoxes;
std::int32_t BoxAnswer = Platform::IdOk;
bool PopupIsVisible = false;

namespace Platform {

namespace {

WindowObject* const LastPopup = reinterpret_cast<WindowObject*>(&PopupIsVisible);

} // namespace

std::int32_t MessageBox(Window owner, const char16_t* text, const char16_t* title, std::uint32_t style) noexcept {
    return MessageBoxIndirect(owner, text, title, style, nullptr, nullptr);
}

std::int32_t MessageBoxIndirect(Window, const char16_t* text, const char16_t* title, std::uint32_t style, Module module,
                                const char16_t* iconName) {
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), " %x", style);
    ShownBoxes += Readable(title) + ": " + Readable(text) + number.data();
    if (module == GetProgramModule() && iconName) {
        ShownBoxes += " (" + Readable(iconName) + ")";
    }
    ShownBoxes += "\n";
    return BoxAnswer;
}

Window GetLastActivePopup(Window owner) {
    return owner ? LastPopup : nullptr;
}

bool IsWindowVisible(Window window) {
    return window == LastPopup && PopupIsVisible;
}

} // namespace Platform
