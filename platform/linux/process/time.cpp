#include "platform/inc/time.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <cwchar>
#include <string>
#include <vector>

namespace Platform {

static_assert(RangeError == ERANGE);

namespace {

constexpr FileTime TicksPerSecond = 10'000'000;
constexpr FileTime TicksPerDay = TicksPerSecond * 60 * 60 * 24;
constexpr std::uint16_t FirstYear = 1601;
constexpr std::uint16_t LastYear = 30827; // the last whole year that 63 bits can count to
constexpr auto FirstDay = std::chrono::sys_days(std::chrono::January / 1 / FirstYear);

timespec Now() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

// What the clocks of the user's zone are ahead of UTC at present.
FileTime LocalLead() {
    const time_t now = Now().tv_sec;
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_gmtoff * TicksPerSecond;
}

bool MoveBy(FileTime ticks, FileTime time, FileTime& result) {
    return !__builtin_add_overflow(time, ticks, &result) || Fail(ErrorInvalidParameter);
}

std::chrono::year_month_day DateOf(const SystemTime& time) {
    return std::chrono::year(time.year) / std::chrono::month(time.month) / std::chrono::day(time.day);
}

bool IsInCalendar(const SystemTime& time) {
    // The library's month and day have 8 bits, in which 257 is 1.
    return time.year >= FirstYear && time.year <= LastYear && time.month <= 12 && time.day <= 31 && DateOf(time).ok() &&
           time.hour < 24 && time.minute < 60 && time.second < 60 && time.milliseconds < 1000;
}

} // namespace

void GetLocalTime(SystemTime& time) {
    FileTime local = 0;
    MoveBy(LocalLead(), GetSystemTimeAsFileTime(), local);
    FileTimeToSystemTime(local, time);
}

FileTime GetSystemTimeAsFileTime() {
    constexpr FileTime unixEpoch = -FirstDay.time_since_epoch().count() * TicksPerDay;
    const timespec now = Now();
    return unixEpoch + now.tv_sec * TicksPerSecond + now.tv_nsec / 100;
}

bool SystemTimeToFileTime(const SystemTime& time, FileTime& result) {
    PLATFORM_FAULT(SystemTimeToFileTime, false);
    if (!IsInCalendar(time)) {
        return Fail(ErrorInvalidParameter);
    }
    const FileTime days = (std::chrono::sys_days(DateOf(time)) - FirstDay).count();
    const FileTime seconds = (FileTime{time.hour} * 60 + time.minute) * 60 + time.second;
    result = days * TicksPerDay + seconds * TicksPerSecond + FileTime{time.milliseconds} * (TicksPerSecond / 1000);
    return true;
}

bool FileTimeToSystemTime(FileTime time, SystemTime& result) {
    PLATFORM_FAULT(FileTimeToSystemTime, false);
    if (time < 0) {
        return Fail(ErrorInvalidParameter);
    }
    const std::chrono::sys_days day = FirstDay + std::chrono::days(time / TicksPerDay);
    const std::chrono::year_month_day date(day);
    const FileTime seconds = time % TicksPerDay / TicksPerSecond;
    result.year = static_cast<std::uint16_t>(static_cast<int>(date.year()));
    result.month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month()));
    result.dayOfWeek = static_cast<std::uint16_t>(std::chrono::weekday(day).c_encoding());
    result.day = static_cast<std::uint16_t>(static_cast<unsigned>(date.day()));
    result.hour = static_cast<std::uint16_t>(seconds / 3600);
    result.minute = static_cast<std::uint16_t>(seconds / 60 % 60);
    result.second = static_cast<std::uint16_t>(seconds % 60);
    result.milliseconds = static_cast<std::uint16_t>(time % TicksPerSecond / (TicksPerSecond / 1000));
    return true;
}

bool LocalFileTimeToFileTime(FileTime time, FileTime& result) {
    PLATFORM_FAULT(LocalFileTimeToFileTime, false);
    return MoveBy(-LocalLead(), time, result);
}

bool FileTimeToLocalFileTime(FileTime time, FileTime& result) {
    PLATFORM_FAULT(FileTimeToLocalFileTime, false);
    return MoveBy(LocalLead(), time, result);
}

std::size_t wcsftime(char16_t* buffer, std::size_t size, const char16_t* format, const std::tm& time) {
    errno = EINVAL;
    PLATFORM_FAULT(wcsftime, 0);
    errno = 0;
    // A character behind the format tells an empty result from a buffer that is too small: the C library gives 0 and
    // no error number for both.
    std::wstring marked(format, format + std::char_traits<char16_t>::length(format));
    marked += L'.';
    std::vector<wchar_t> printed(size + 1);
    const std::size_t count = std::wcsftime(printed.data(), printed.size(), marked.c_str(), &time);
    if (count == 0) {
        errno = ERANGE;
        return 0;
    }
    // Characters are taken over one by one: the format's surrogates come out as they went in, and the names of no
    // locale lie beyond the first plane.
    *std::transform(printed.begin(), printed.begin() + static_cast<std::ptrdiff_t>(count) - 1, buffer,
                    [](wchar_t c) { return static_cast<char16_t>(c); }) = u'\0';
    return count - 1;
}

int get_errno(int& value) {
    PLATFORM_FAULT(get_errno, EINVAL);
    value = errno;
    return 0;
}

} // namespace Platform
