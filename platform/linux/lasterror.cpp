#include "platform/inc/lasterror.h"

namespace Platform {

namespace {

thread_local std::uint32_t lastError = ErrorSuccess;

} // namespace

std::uint32_t GetLastError() {
    return lastError;
}

void SetLastError(std::uint32_t code) {
    lastError = code;
}

} // namespace Platform
