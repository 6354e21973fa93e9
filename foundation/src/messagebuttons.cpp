// The one table of what a message's style stands for where nobody can be asked.
#include "foundation/inc/messagehandlers.h"
#include "platform/inc/eventlog.h"
#include "platform/inc/messagebox.h"
#include <algorithm>

namespace Tsx {

namespace {

using namespace Platform;

struct ButtonRow {
    std::uint32_t style; // of MbTypeMask
    std::uint16_t eventType;
    std::int32_t first;
    std::int32_t second;
    std::int32_t third;
};

constexpr ButtonRow Buttons[] = {
    {MbOk, EventLogInformationType, IdOk, IdOk, IdOk},
    {MbOkCancel, EventLogWarningType, IdOk, IdCancel, IdOk},
    {MbYesNo, EventLogInformationType, IdYes, IdNo, IdYes},
    {MbYesNoCancel, EventLogInformationType, IdYes, IdNo, IdCancel},
    {MbRetryCancel, EventLogErrorType, IdRetry, IdCancel, IdRetry},
    {MbAbortRetryIgnore, EventLogErrorType, IdAbort, IdRetry, IdIgnore},
};

// A style of the future.
constexpr ButtonRow UnknownButtons{MbTypeMask, EventLogInformationType, IdAbort, IdAbort, IdAbort};

const ButtonRow& ButtonsOf(std::uint32_t style) {
    const auto* row = std::find_if(std::begin(Buttons), std::end(Buttons),
                                   [&](const ButtonRow& r) { return r.style == (style & MbTypeMask); });
    return row == std::end(Buttons) ? UnknownButtons : *row;
}

} // namespace

std::int32_t GetDefaultButton(std::uint32_t style) {
    const ButtonRow& row = ButtonsOf(style);
    return style & MbDefButton2 ? row.second : style & MbDefButton3 ? row.third : row.first;
}

std::uint16_t GetEventType(std::uint32_t style) {
    switch (style & MbIconMask) {
    case MbIconHand:
        return EventLogErrorType;
    case MbIconExclamation:
        return EventLogWarningType;
    case MbIconQuestion:
    case MbIconInformation:
        return EventLogInformationType;
    default:
        return ButtonsOf(style).eventType;
    }
}

} // namespace Tsx
