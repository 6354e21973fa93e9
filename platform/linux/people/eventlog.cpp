#include "platform/inc/eventlog.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/text/nativetext.h"
#include <memory>
#include <mutex>
#include <new>
#include <syslog.h>

namespace Platform {

namespace {

int LevelOf(std::uint16_t type) {
    switch (type) {
    case EventLogErrorType:
        return LOG_ERR;
    case EventLogWarningType:
        return LOG_WARNING;
    default:
        return LOG_INFO;
    }
}

// The identity of a line belongs to the whole process.
std::mutex& SyslogLock() {
    static std::mutex lock;
    return lock;
}

} // namespace

Handle RegisterEventSource(const char16_t* server, const char16_t* source) {
    PLATFORM_FAULT(RegisterEventSource, nullptr);
    if (server && *server != 0) {
        return Fail(ErrorInvalidParameter, nullptr);
    }
    auto object = std::unique_ptr<EventSourceObject>(new (std::nothrow) EventSourceObject);
    if (!object) {
        return Fail(ErrorNotEnoughMemory, nullptr);
    }
    object->identity = Utf8Text(source);
    return static_cast<HandleObject*>(object.release());
}

bool ReportEvent(Handle source, std::uint16_t type, std::uint16_t, std::uint32_t, std::uint16_t count,
                 const char16_t* const* strings) {
    PLATFORM_FAULT(ReportEvent, false);
    const EventSourceObject* object = EventSourceOf(source);
    if (!object) {
        return false;
    }
    std::string line;
    for (std::uint16_t i = 0; i < count; ++i) {
        line += (i == 0 ? "" : ": ") + Utf8Text(strings[i]);
    }
    const std::lock_guard guard(SyslogLock());
    openlog(object->identity.c_str(), LOG_PID, LOG_USER);
    syslog(LevelOf(type), "%s", line.c_str());
    closelog(); // it keeps the pointer to the identity
    return true;
}

bool DeregisterEventSource(Handle source) {
    const std::unique_ptr<EventSourceObject> object(EventSourceOf(source));
    PLATFORM_FAULT(DeregisterEventSource, false);
    return object != nullptr;
}

} // namespace Platform
