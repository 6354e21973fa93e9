#include "platform/inc/time.h"

#include "platform/win32/filetimes.h"
#include "platform/win32/windowsapi.h"
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cwchar>

namespace Platform {

static_assert(RangeError == ERANGE);

namespace {

// From one zone's time to another's.
bool Convert(decltype(&::FileTimeToLocalFileTime) convert, FileTime time, FileTime& result) {
    const FILETIME given = NativeTime(time);
    FILETIME converted;
    const bool success = convert(&given, &converted) != 0;
    if (success) {
        result = TimeCount(converted);
    }
    return success;
}

} // namespace

void GetLocalTime(SystemTime& time) {
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    time = std::bit_cast<SystemTime>(now);
}

FileTime GetSystemTimeAsFileTime() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return TimeCount(now);
}

bool SystemTimeToFileTime(const SystemTime& time, FileTime& result) {
    const auto fields = std::bit_cast<SYSTEMTIME>(time);
    FILETIME converted;
    const bool success = ::SystemTimeToFileTime(&fields, &converted) != 0;
    if (success) {
        result = TimeCount(converted);
    }
    return success;
}

bool FileTimeToSystemTime(FileTime time, SystemTime& result) {
    const FILETIME given = NativeTime(time);
    SYSTEMTIME fields;
    const bool success = ::FileTimeToSystemTime(&given, &fields) != 0;
    if (success) {
        result = std::bit_cast<SystemTime>(fields);
    }
    return success;
}

bool LocalFileTimeToFileTime(FileTime time, FileTime& result) {
    return Convert(&::LocalFileTimeToFileTime, time, result);
}

bool FileTimeToLocalFileTime(FileTime time, FileTime& result) {
    return Convert(&::FileTimeToLocalFileTime, time, result);
}

std::size_t wcsftime(char16_t* buffer, std::size_t size, const char16_t* format, const std::tm& time) {
    errno = 0; // an empty result sets none
    return ::wcsftime(Wide(buffer), size, Wide(format), &time);
}

int get_errno(int& value) {
    return ::_get_errno(&value);
}

} // namespace Platform
