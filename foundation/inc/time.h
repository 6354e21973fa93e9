// Time values and their text forms, for the message log and the files in memory.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/time.h"

namespace Tsx {

/// Intervals of 100 nanoseconds since 1 January 1601, in UTC. Not negative; 0 means that there is no time.
using TTime = std::int64_t;

/// From a moment in the user's time zone. One that the calendar lacks, or that lies before the first time value, is an
/// internal error, and no time (0) where none can be thrown.
TTime TimeFromLocalSystemTime(const Platform::SystemTime& time);

/// A moment as the run-time's wcsftime prints it in the current locale; no conversion of time zones takes place. An
/// empty format gives an empty text; a null one, a negative time and a format that prints nothing are internal errors.
/// AS DESIGNED: the day of the year is not filled in, so that "%j" gives 001 and the week numbers follow from that.
///
///   "%H:%M:%S ", 9:05:03      "09:05:03 "
///   "%Y-%m-%d", 28 Feb 2024   "2024-02-28"
CUnicodeString FormatTime(const char16_t* format, Platform::FileTime time);

/// Hours, minutes and seconds in the user's time zone, and a blank: "09:05:03 ".
CUnicodeString FormatLocalTimeOfDay(TTime time);

} // namespace Tsx
