#include "platform/inc/debug.h"

#include "platform/linux/nativetext.h"
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace Platform {

void OutputDebugString(const char16_t* text) {
    if (std::getenv("TESSARIX_DEBUG_OUTPUT")) {
        std::fputs(Utf8Text(text).c_str(), stderr);
    }
}

void DebugBreak() {
    std::raise(SIGTRAP);
}

OsVersion GetVersionEx() {
    return {2, 6, 2};
}

} // namespace Platform
