#include "platform/inc/console.h"

#include "platform/win32/windowsapi.h"

namespace Platform {

Handle GetStdHandle(std::int32_t which) {
    return ::GetStdHandle(static_cast<DWORD>(which));
}

bool SetStdHandle(std::int32_t which, Handle handle) {
    return ::SetStdHandle(static_cast<DWORD>(which), handle) != FALSE;
}

bool WriteConsole(Handle console, const char16_t* text, std::uint32_t length, std::uint32_t& written) {
    DWORD count = 0;
    const bool done = ::WriteConsoleW(console, text, length, &count, nullptr) != 0;
    written = count;
    return done;
}

std::uint32_t GetConsoleOutputCP() {
    return ::GetConsoleOutputCP();
}

} // namespace Platform
