#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/resourceinfo.h"
#include "foundation/src/pressedbutton.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

namespace {

using namespace Platform;

// A text without an icon is a warning; the styles that offer to retry say what they are by their buttons.
bool TakesExclamation(std::uint32_t style) {
    if (style & MbIconMask) {
        return false;
    }
    switch (style & MbTypeMask) {
    case MbOk:
    case MbOkCancel:
    case MbYesNoCancel:
    case MbYesNo:
        return true;
    default:
        return false;
    }
}

bool IsVisible(Window owner) {
    Window popup = owner ? GetLastActivePopup(owner) : nullptr;
    return popup && IsWindowVisible(popup);
}

// The style in which a box is shown.
std::uint32_t GetBoxStyle(std::uint32_t style, Window owner, const char16_t* iconName) {
    if (iconName) {
        constexpr std::uint32_t systemIcons = MbIconMask & ~MbUserIcon;
        style = (style & ~systemIcons) | MbUserIcon;
    } else if (TakesExclamation(style)) {
        style |= MbIconExclamation;
    }
    // A box that belongs to nothing on the screen must not open behind what is there.
    return IsVisible(owner) ? style : style | MbSetForeground | MbTopmost | MbTaskModal;
}

} // namespace

std::int32_t CMessageBoxHandler::ShowMessageBox(Window owner, const char16_t* text, const char16_t* title,
                                                std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    return PressedButton(MessageBox(owner, text, title, GetBoxStyle(style, owner, nullptr)), style);
}

std::int32_t CMessageBoxHandler::ShowMessageWithIcon(Window owner, const char16_t* text, const char16_t* title,
                                                     std::uint32_t style, const char16_t* iconName) {
    const CRuntimeHeapSwitcher switcher;
    Module module = iconName ? GetResourceBase().FindModuleWithIcon(iconName) : nullptr;
    TSX_ASSERT(module || !iconName, u"src\\messageboxhandler");
    const std::uint32_t boxStyle = GetBoxStyle(style, owner, iconName);
    return PressedButton(MessageBoxIndirect(owner, text, title, boxStyle, module, iconName), style);
}

} // namespace Tsx
