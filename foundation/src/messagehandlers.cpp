#include "foundation/inc/messagehandlers.h"

#include "foundation/inc/threadobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\messagehandlers";

// Under HandlerLock.
CMessageHandler* processHandler = nullptr;
CMessageHandler* defaultHandler = nullptr; // null until it is chosen
bool defaultHandlerGone = false;           // the chosen one was destroyed

struct ButtonRow {
    std::uint32_t style; // the low four bits of a message-box word
    std::int32_t first;
    std::int32_t second;
    std::int32_t third;
};

using namespace Platform;

constexpr ButtonRow Buttons[] = {
    {MbOk, IdOk, IdOk, IdOk},
    {MbOkCancel, IdOk, IdCancel, IdOk},
    {MbYesNo, IdYes, IdNo, IdYes},
    {MbYesNoCancel, IdYes, IdNo, IdCancel},
    {MbRetryCancel, IdRetry, IdCancel, IdRetry},
    {MbAbortRetryIgnore, IdAbort, IdRetry, IdIgnore},
};

} // namespace

CMessageHandler::~CMessageHandler() {
    const CCriticalSectionLock guard(HandlerLock);
    if (defaultHandler == this) {
        defaultHandler = nullptr;
        defaultHandlerGone = true;
    }
}

std::int32_t CMessageHandler::ShowMessageWithIcon(Window owner, const char16_t* text, const char16_t* title,
                                                  std::uint32_t style, const char16_t* iconName) {
    static_cast<void>(iconName);
    return ShowMessageBox(owner, text, title, style);
}

void CMessageHandler::ShowException(CException* exception) {
    const CReentryScope scope(1);
    exception->ReportToUser();
}

std::int32_t CMessageBoxHandler::ShowMessageBox(Window owner, const char16_t* text, const char16_t* title,
                                                std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    return MessageBox(owner, text, title, style);
}

CMessageHandlerScope::CMessageHandlerScope(CMessageHandler* toInstall) : handler(toInstall) {
    const CCriticalSectionLock guard(HandlerLock);
    previous = processHandler;
    processHandler = handler;
}

CMessageHandlerScope::~CMessageHandlerScope() {
    try {
        const CCriticalSectionLock guard(HandlerLock);
        CMessageHandler* const replaced = processHandler;
        processHandler = previous;
        TSX_ASSERT(replaced == handler, ModuleName);
    } catch (CException* exception) {
        delete exception;
    }
}

CMessageHandler* GetDefaultMessageHandler() {
    const CCriticalSectionLock guard(HandlerLock);
    if (!defaultHandler && !defaultHandlerGone) {
        defaultHandler = &StaticMessageBoxHandler;
    }
    return defaultHandler;
}

CMessageHandler* GetCurrentMessageHandler() {
    const CCriticalSectionLock guard(HandlerLock);
    return processHandler ? processHandler : GetDefaultMessageHandler();
}

std::int32_t DisplayMessage(const CUnicodeString& text, std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    const CUnicodeString title = GetStoredApplicationName();
    const CCriticalSectionLock guard(HandlerLock);
    CMessageHandler* handler = GetCurrentMessageHandler();
    return handler ? handler->ShowMessageBox(nullptr, text.Text(), title.Text(), style)
                   : MessageBox(nullptr, text.Text(), FoundationTitle, style);
}

void DisplayException(CException* exception) {
    const CCriticalSectionLock guard(HandlerLock);
    if (CMessageHandler* handler = GetCurrentMessageHandler()) {
        handler->ShowException(exception);
    }
}

void SetApplicationName(const CUnicodeString& name) {
    const CCriticalSectionLock guard(ApplicationNameLock);
    StoredApplicationName = name;
}

CUnicodeString GetStoredApplicationName() {
    const CCriticalSectionLock guard(ApplicationNameLock);
    return StoredApplicationName.IsEmpty() ? CUnicodeString(FoundationTitle) : StoredApplicationName;
}

std::int32_t GetDefaultButton(std::uint32_t style) {
    for (const ButtonRow& row : Buttons) {
        if (row.style == (style & 0xF)) {
            return style & MbDefButton2 ? row.second : style & MbDefButton3 ? row.third : row.first;
        }
    }
    return IdAbort;
}

} // namespace Tsx
