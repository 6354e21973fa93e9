#include "foundation/inc/messagehandlers.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagelog.h"
#include "foundation/inc/threadobject.h"
#include "foundation/inc/versioninfo.h"
#include "foundation/src/statics.h"
#include "platform/inc/files.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\messagehandlers";

// Under handlerLock, which is over threadHandler too.
CMessageHandler* processHandler = nullptr;
CMessageHandler* defaultHandler = nullptr; // null until it is chosen

bool IsConsoleLike(std::uint32_t fileType) {
    return fileType == Platform::FileTypeDisk || fileType == Platform::FileTypeChar ||
           fileType == Platform::FileTypePipe;
}

CMessageHandler* HandlerForOutput() {
    Platform::Handle output = Platform::GetStdHandle(Platform::StdOutputHandle);
    const bool missing = !output || output == Platform::InvalidHandle();
    if (!missing && IsConsoleLike(Platform::GetFileType(output) & ~Platform::FileTypeRemote)) {
        return &StaticConsoleMessageHandler;
    }
    return &StaticMessageBoxHandler;
}

// The handler that the program's version record names; null if it names none or cannot be read.
CMessageHandler* HandlerByName() {
    CUnicodeString wanted;
    RunSilently([&wanted] {
        CVersionInfo version;
        version.Load(FileSystem::GetProgramPath());
        wanted = version.GetString(u"MessageHandler");
    });
    const struct {
        const char16_t* name;
        CMessageHandler* handler;
    } choices[] = {{u"EVENTLOG", &StaticEventLogMessageHandler},
                   {u"MESSAGEBOX", &StaticMessageBoxHandler},
                   {u"CONSOLE", &StaticConsoleMessageHandler}};
    for (const auto& choice : choices) {
        if (wanted.CompareNoCase(choice.name) == 0) {
            return choice.handler;
        }
    }
    return nullptr;
}

// Where a handler is installed. Raises CMemoryException, and is null on a thread that must not throw it.
CMessageHandler** PlaceOfHandler(bool perThread) {
    if (!perThread) {
        return &processHandler;
    }
    CThreadHandler* own = threadHandler.Get();
    return own ? &own->Handler : nullptr;
}

} // namespace

CMessageHandler::~CMessageHandler() {
    const CCriticalSectionLock guard(handlerLock);
    if (defaultHandler == this) {
        defaultHandler = InvalidMessageHandler();
    }
}

std::int32_t CMessageHandler::ShowMessageWithIcon(Platform::Window owner, const char16_t* text, const char16_t* title,
                                                  std::uint32_t style, const char16_t*) {
    return ShowMessageBox(owner, text, title, style);
}

void CMessageHandler::ShowException(CException* exception) {
    const CReentryScope scope(CReentryScope::RS_InternalError);
    exception->ReportToUser();
}

CMessageHandlerScope::CMessageHandlerScope(CMessageHandler* toInstall, bool forThisThread)
    : handler(toInstall), perThread(forThisThread) {
    const CCriticalSectionLock guard(handlerLock);
    if (CMessageHandler** place = PlaceOfHandler(perThread)) {
        previous = std::exchange(*place, handler);
        active = true;
    }
}

CMessageHandlerScope::~CMessageHandlerScope() {
    if (!active) {
        return;
    }
    RunSilently([this] {
        const CCriticalSectionLock guard(handlerLock);
        CMessageHandler* const replaced = std::exchange(*PlaceOfHandler(perThread), previous);
        active = false;
        TSX_ASSERT(replaced == handler, ModuleName);
    });
}

CMessageHandler* GetDefaultMessageHandler() {
    const CCriticalSectionLock guard(handlerLock);
    if (!DoStaticHandlersStand()) {
        return InvalidMessageHandler();
    }
    if (!defaultHandler) {
        defaultHandler = HandlerForOutput(); // for what the reading of the version record shows
        if (CMessageHandler* named = HandlerByName()) {
            defaultHandler = named;
        }
    }
    return defaultHandler;
}

CMessageHandler* GetCurrentMessageHandler() {
    const CCriticalSectionLock guard(handlerLock);
    const CThreadHandler* own = threadHandler.Find();
    if (own && own->Handler) {
        return own->Handler;
    }
    return processHandler ? processHandler : GetDefaultMessageHandler();
}

std::int32_t DisplayMessage(const char16_t* text, std::uint32_t style) {
    const CRuntimeHeapSwitcher switcher;
    const CUnicodeString title = GetStoredApplicationName();
    const CCriticalSectionLock guard(handlerLock);
    WriteMessageLogLine(text);
    CMessageHandler* handler = GetCurrentMessageHandler();
    if (handler == InvalidMessageHandler()) {
        return PressedButton(ShowLastResort(text, style), style);
    }
    return handler->ShowMessageBox(nullptr, text, title.Text(), style);
}

// AS DESIGNED: an exception that shows itself with DisplayMessage stands in the log twice, once as what was raised and
// once as what was shown.
void DisplayException(CException* exception) {
    const CRuntimeHeapSwitcher switcher;
    const CCriticalSectionLock guard(handlerLock);
    const CUnicodeString text = exception->GetMessageText();
    if (!dynamic_cast<CUserException*>(exception)) {
        WriteMessageLogLine(text.Text());
    }
    CMessageHandler* handler = GetCurrentMessageHandler();
    if (handler != InvalidMessageHandler()) {
        handler->ShowException(exception);
    }
}

void SetApplicationName(const CUnicodeString& name) {
    const CCriticalSectionLock guard(ApplicationNameLock);
    StoredApplicationName = name;
}

CUnicodeString GetStoredApplicationName() {
    const CCriticalSectionLock guard(ApplicationNameLock);
    return StoredApplicationName.IsEmpty() ? FoundationTitleString : StoredApplicationName;
}

} // namespace Tsx
