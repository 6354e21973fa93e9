#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/registrykey.h"
#include "foundation/src/statics.h"
#include "platform/inc/eventlog.h"

namespace Tsx {

namespace {

constexpr const char16_t* SourcesKey = u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\";
constexpr const char16_t* MessageFileValue = u"EventMessageFile";
constexpr const char16_t* MessageFileName = u"TsxEventSrc.dll";

// Tells the system where the texts of a source's events are. Without the right to do so its events have no text around
// their strings.
void StoreMessageFile(const CUnicodeString& source) {
    RunSilently([&source] {
        CRegistryKey key;
        if (key.Open(Platform::RootKey(Platform::HkeyLocalMachine), (SourcesKey + source).Text(), RK_Write)) {
            const CUnicodeString path = FileSystem::GetProgramDirectory() + MessageFileName;
            const std::int32_t size = (path.Length() + 1) * static_cast<std::int32_t>(sizeof(char16_t));
            key.SetStringValue(MessageFileValue, path.Text(), size);
        }
    });
}

} // namespace

CEventLogMessageHandler::~CEventLogMessageHandler() {
    if (source && source != Platform::InvalidHandle()) {
        Platform::DeregisterEventSource(source);
    }
}

void CEventLogMessageHandler::RegisterSource() {
    const CUnicodeString name = GetStoredApplicationName();
    StoreMessageFile(name);
    source = Platform::RegisterEventSource(nullptr, name.Text());
    if (!source) {
        source = Platform::InvalidHandle(); // refused: silent from now on
    }
}

void CEventLogMessageHandler::WriteEvent(const char16_t* text, const char16_t* title, std::uint16_t type) {
    constexpr std::uint16_t noCategory = 0;
    constexpr std::uint32_t eventId = 1; // the message file's only message: the two strings
    const CCriticalSectionLock guard(EventLogHandlerLock);
    if (!source) {
        RegisterSource();
    }
    if (source != Platform::InvalidHandle()) {
        const char16_t* const strings[] = {title, text};
        Platform::ReportEvent(source, type, noCategory, eventId, 2, strings);
    }
}

std::int32_t CEventLogMessageHandler::ShowMessageBox(Platform::Window, const char16_t* text, const char16_t* title,
                                                     std::uint32_t style) {
    WriteEvent(text, title, GetEventType(style));
    return GetDefaultButton(style);
}

void CEventLogMessageHandler::ShowException(CException* exception) {
    const CUnicodeString text = exception->GetMessageText();
    if (!dynamic_cast<CUserException*>(exception)) {
        const CUnicodeString title = sourceName.IsEmpty() ? GetStoredApplicationName() : sourceName;
        WriteEvent(text.Text(), title.Text(), Platform::EventLogErrorType);
    }
}

} // namespace Tsx
