#include "foundation/inc/time.h"

#include "foundation/inc/assertion.h"
#include <algorithm>
#include <ctime>
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\time";

std::tm CalendarFields(const Platform::SystemTime& time) {
    std::tm fields{};
    fields.tm_year = time.year - 1900;
    fields.tm_mon = time.month - 1;
    fields.tm_mday = time.day;
    fields.tm_hour = time.hour;
    fields.tm_min = time.minute;
    fields.tm_sec = time.second;
    fields.tm_wday = time.dayOfWeek;
    fields.tm_isdst = -1;
    return fields;
}

// Tries with ever larger buffers: the run-time does not tell how much room a text takes.
CUnicodeString PrintFields(const CUnicodeString& format, const std::tm& fields) {
    constexpr std::int64_t leastSize = 48;
    CUnicodeString text;
    int code = Platform::RangeError;
    for (std::int64_t size = std::max(std::int64_t{format.Length()} + 12, leastSize);; size += size / 4) {
        if (size > std::numeric_limits<std::int32_t>::max()) {
            GenerateMemoryException();
        }
        char16_t* buffer = text.GetBuffer(static_cast<std::int32_t>(size));
        const std::size_t length = Platform::wcsftime(buffer, static_cast<std::size_t>(size), format.Text(), fields);
        text.SetLength(static_cast<std::int32_t>(length));
        if (length != 0) {
            return text;
        }
        const bool known = Platform::get_errno(code) == 0;
        TSX_REQUIRE_AT(code == Platform::RangeError, ModuleName, 317, {});
        if (!known) {
            return {};
        }
    }
}

} // namespace

TTime TimeFromLocalSystemTime(const Platform::SystemTime& time) {
    Platform::FileTime local = 0;
    TSX_REQUIRE_AT(Platform::SystemTimeToFileTime(time, local), ModuleName, 128, 0);
    TTime value = 0;
    TSX_REQUIRE_AT(Platform::LocalFileTimeToFileTime(local, value), ModuleName, 113, 0);
    TSX_REQUIRE_AT(value >= 0, ModuleName, 106, 0);
    return value;
}

CUnicodeString FormatTime(const char16_t* format, Platform::FileTime time) {
    TSX_REQUIRE_AT(format, ModuleName, 285, {});
    const CUnicodeString wanted(format);
    if (wanted.IsEmpty()) {
        return {};
    }
    Platform::SystemTime calendar{};
    TSX_REQUIRE_AT(Platform::FileTimeToSystemTime(time, calendar), ModuleName, 293, {});
    return PrintFields(wanted, CalendarFields(calendar));
}

CUnicodeString FormatLocalTimeOfDay(TTime time) {
    Platform::FileTime local = 0;
    TSX_REQUIRE_AT(Platform::FileTimeToLocalFileTime(time, local), ModuleName, 265, {});
    return FormatTime(u"%H:%M:%S ", local);
}

} // namespace Tsx
