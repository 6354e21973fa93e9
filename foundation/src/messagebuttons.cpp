// What a message's style stands for in a handler that cannot ask anybody: the default button, and the type of an event.
#include "foundation/inc/messagehandlers.h"
#include "platform/inc/eventlog.h"
#include "platform/inc/messagebox.h"
#include <algorithm>

namespace Tsx {

namespace {

struct CButtonRow {
    std::uint32_t style; // of Platform::MbTypeMask
    std::uint16_t eventType;
    std::int32_t first;
    std::int32_t second;
    std::int32_t third;
};

constexpr CButtonRow Buttons[] = {
    {Platform::MbOk, Platform::EventLogInformationType, Platform::IdOk, Platform::IdOk, Platform::IdOk},
    {Platform::MbOkCancel, Platform::EventLogWarningType, Platform::IdOk, Platform::IdCancel, Platform::IdOk},
    {Platform::MbYesNo, Platform::EventLogInformationType, Platform::IdYes, Platform::IdNo, Platform::IdYes},
    {Platform::MbYesNoCancel, Platform::EventLogInformationType, Platform::IdYes, Platform::IdNo, Platform::IdCancel},
    {Platform::MbRetryCancel, Platform::EventLogErrorType, Platform::IdRetry, Platform::IdCancel, Platform::IdRetry},
    {Platform::MbAbortRetryIgnore, Platform::EventLogErrorType, Platform::IdAbort, Platform::IdRetry,
     Platform::IdIgnore},
};

// For a style that is none of the table's.
constexpr CButtonRow UnknownButtons{Platform::MbTypeMask, Platform::EventLogInformationType, Platform::IdAbort,
                                    Platform::IdAbort, Platform::IdAbort};

const CButtonRow& ButtonsOf(std::uint32_t style) {
    const auto* row = std::find_if(std::begin(Buttons), std::end(Buttons),
                                   [&](const CButtonRow& r) { return r.style == (style & Platform::MbTypeMask); });
    return row == std::end(Buttons) ? UnknownButtons : *row;
}

} // namespace

std::int32_t GetDefaultButton(std::uint32_t style) {
    const CButtonRow& row = ButtonsOf(style);
    return style & Platform::MbDefButton2 ? row.second : style & Platform::MbDefButton3 ? row.third : row.first;
}

std::uint16_t GetEventType(std::uint32_t style) {
    switch (style & Platform::MbIconMask) {
    case Platform::MbIconHand:
        return Platform::EventLogErrorType;
    case Platform::MbIconExclamation:
        return Platform::EventLogWarningType;
    case Platform::MbIconQuestion:
    case Platform::MbIconInformation:
        return Platform::EventLogInformationType;
    default:
        return ButtonsOf(style).eventType;
    }
}

} // namespace Tsx
