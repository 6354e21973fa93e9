#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/resourceinfo.h"
#include "foundation/src/pressedbutton.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

namespace {

using namespace Platform;

// A warning is the least that a box says; the styles that offer to retry bring what they mean by themselves.
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

bool HasVisibleOwner(Window owner) {
    Window popup = owner ? GetLastActivePopup(owner) : nullptr;
    return popup && IsWindowVisible(popup);
}

// A box that belongs to nothing on the screen must not open behind it.
std::uint32_t WithPlacement(std::uint32_t style, Window owner) {
    return HasVisibleOwner(owner) ? style : style | MbSetForeground | MbTopmost | MbTaskModal;
}

std::uint32_t WithIcon(std::uint32_t style) {
    return TakesExclamation(style) ? style | MbIconExclamation : style;
}

} // namespace

std::int32_t CMessageBoxHandler::ShowMessageBox(Window owner, const char16_t* text, const char16_t* title,
                                                std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    return PressedButton(MessageBox(owner, text, title, WithPlacement(WithIcon(style), owner)), style);
}

std::int32_t CMessageBoxHandler::ShowMessageWithIcon(Window owner, const char16_t* text, const char16_t* title,
                                                     std::uint32_t style, const char16_t* iconName) {
    const CRuntimeHeapSwitcher switcher;
    Module module = nullptr;
    std::uint32_t boxStyle = WithIcon(style);
    if (iconName) {
        module = GetResourceBase().FindModuleWithIcon(iconName);
        TSX_ASSERT(module, u"src\\messagehandlers");
        constexpr std::uint32_t systemIcons = 0x70;
        boxStyle = (style & ~systemIcons) | MbUserIcon;
    }
    const std::uint32_t placed = WithPlacement(boxStyle, owner);
    return PressedButton(MessageBoxIndirect(owner, text, title, placed, module, iconName), style);
}

} // namespace Tsx
