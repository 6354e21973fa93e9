#include "platform/inc/debug.h"

#include "platform/linux/people/standarderror.h"
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace Platform {

void OutputDebugString(const char16_t* text) {
    if (std::getenv("TESSARIX_DEBUG_OUTPUT")) {
        WriteToStandardError({text});
    }
}

bool IsDebuggerPresent() {
    // The process that traces this one, 0 if none does.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> status(std::fopen("/proc/self/status", "re"), &std::fclose);
    char line[256] = {};
    long tracer = 0;
    while (status && tracer == 0 && std::fgets(line, sizeof(line), status.get())) {
        constexpr std::string_view field = "TracerPid:";
        if (std::string_view(line).starts_with(field)) {
            tracer = std::strtol(line + field.size(), nullptr, 10);
        }
    }
    return tracer != 0;
}

void DebugBreak() {
    std::raise(SIGTRAP);
}

OsVersion GetVersionEx() {
    return {2, 6, 2};
}

} // namespace Platform
