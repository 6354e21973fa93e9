#include "platform/inc/eventlog.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

constexpr const char16_t* EventLibrary = u"advapi32.dll";

} // namespace

Handle RegisterEventSource(const char16_t* server, const char16_t* source) {
    auto* open = SystemProcedure<decltype(::RegisterEventSourceW)>(EventLibrary, "RegisterEventSourceW");
    return open ? open(Wide(server), Wide(source)) : nullptr;
}

bool ReportEvent(Handle source, std::uint16_t type, std::uint16_t category, std::uint32_t eventId, std::uint16_t count,
                 const char16_t* const* strings) {
    auto* write = SystemProcedure<decltype(::ReportEventW)>(EventLibrary, "ReportEventW");
    auto** texts = reinterpret_cast<LPCWSTR*>(const_cast<const char16_t**>(strings)); // read only
    return write && write(source, type, category, eventId, nullptr, count, 0, texts, nullptr);
}

bool DeregisterEventSource(Handle source) {
    auto* close = SystemProcedure<decltype(::DeregisterEventSource)>(EventLibrary, "DeregisterEventSource");
    return close && close(source);
}

} // namespace Platform
