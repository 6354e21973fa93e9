// The system's event log: the Windows one, and syslog on Linux.
#pragma once

#include "platform/inc/types.h"
#include <cstdint>

namespace Platform {

constexpr std::uint16_t EventLogErrorType = 1;       // EVENTLOG_ERROR_TYPE
constexpr std::uint16_t EventLogWarningType = 2;     // EVENTLOG_WARNING_TYPE
constexpr std::uint16_t EventLogInformationType = 4; // EVENTLOG_INFORMATION_TYPE

/// A handle to write events under the name `source`, ended by DeregisterEventSource; null on failure. `server` null is
/// this machine, and Linux knows no other.
Handle RegisterEventSource(const char16_t* server, const char16_t* source);

/// Writes an event of `count` strings. On Linux the source is the identity of the line, the strings are joined by ": ",
/// the type becomes the level (error, warning, and information for all others), and category and event id go unused.
bool ReportEvent(Handle source, std::uint16_t type, std::uint16_t category, std::uint32_t eventId, std::uint16_t count,
                 const char16_t* const* strings);

bool DeregisterEventSource(Handle source);

} // namespace Platform
