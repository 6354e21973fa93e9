#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/resourceinfo.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

namespace {

// A text without an icon is a warning; the styles that offer to retry say what they are by their buttons.
bool TakesExclamation(std::uint32_t style) {
    if (style & Platform::MbIconMask) {
        return false;
    }
    switch (style & Platform::MbTypeMask) {
    case Platform::MbOk:
    case Platform::MbOkCancel:
    case Platform::MbYesNoCancel:
    case Platform::MbYesNo:
        return true;
    default:
        return false;
    }
}

bool IsVisible(Platform::Window owner) {
    Platform::Window popup = owner ? Platform::GetLastActivePopup(owner) : nullptr;
    return popup && Platform::IsWindowVisible(popup);
}

// The style in which a box is shown.
std::uint32_t GetBoxStyle(std::uint32_t style, Platform::Window owner, const char16_t* iconName) {
    if (iconName) {
        constexpr std::uint32_t systemIcons = Platform::MbIconMask & ~Platform::MbUserIcon;
        style = (style & ~systemIcons) | Platform::MbUserIcon;
    } else if (TakesExclamation(style)) {
        style |= Platform::MbIconExclamation;
    }
    // A box that belongs to nothing on the screen must not open behind what is there.
    return IsVisible(owner) ? style : style | Platform::MbSetForeground | Platform::MbTopmost | Platform::MbTaskModal;
}

} // namespace

std::int32_t CMessageBoxHandler::ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                                std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    return PressedButton(Platform::MessageBox(owner, text, title, GetBoxStyle(style, owner, nullptr)), style);
}

std::int32_t CMessageBoxHandler::ShowMessageWithIcon(Platform::Window owner, const char16_t* text,
                                                     const char16_t* title, std::uint32_t style,
                                                     const char16_t* iconName) {
    const CRuntimeHeapSwitcher switcher;
    Platform::Module module = iconName ? GetResourceBase().FindModuleWithIcon(iconName) : nullptr;
    TSX_ASSERT(module || !iconName, u"src\\messageboxhandler");
    const std::uint32_t boxStyle = GetBoxStyle(style, owner, iconName);
    return PressedButton(Platform::MessageBoxIndirect(owner, text, title, boxStyle, module, iconName), style);
}

} // namespace Tsx
