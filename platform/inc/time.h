// The clock, the calendar, the user's time zone, and the run-time's printing of times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace Platform {

/// A FILETIME as one number: intervals of 100 nanoseconds since 1 January 1601. Not negative where it is valid.
using FileTime = std::int64_t;

/// A moment in the calendar, with the fields of SYSTEMTIME.
struct SystemTime {
    std::uint16_t year; // 1601 to 30827
    std::uint16_t month;
    std::uint16_t dayOfWeek; // 0 is Sunday; not looked at in conversions
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
};

/// The present moment: in the user's time zone, and in UTC.
void GetLocalTime(SystemTime& time);
FileTime GetSystemTimeAsFileTime();

/// False for a moment that the calendar does not have.
bool SystemTimeToFileTime(const SystemTime& time, FileTime& result);
/// False for a negative time.
bool FileTimeToSystemTime(FileTime time, SystemTime& result);

/// From and to the user's time zone. Both go by the difference to UTC that holds at present, whatever the season of
/// the time given, so that each undoes the other for every time.
bool LocalFileTimeToFileTime(FileTime time, FileTime& result);
bool FileTimeToLocalFileTime(FileTime time, FileTime& result);

/// Prints a time as the format says, terminated, and returns the length. 0 when nothing came out: get_errno then gives
/// ERANGE for a buffer of too few characters, 0 for an empty result, and anything else for a bad format.
std::size_t wcsftime(char16_t* buffer, std::size_t size, const char16_t* format, const std::tm& time);

constexpr int RangeError = 34; // ERANGE

/// The run-time's error number of the calling thread. 0, or an error number if it cannot be had.
int get_errno(int& value);

} // namespace Platform
