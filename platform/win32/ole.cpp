#include "platform/inc/ole.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"
#include <ole2.h>

namespace Platform {

namespace {

constexpr const char16_t* Library = u"ole32.dll";

} // namespace

std::int32_t OleInitialize(void* reserved) {
    auto* initialize = SystemProcedure<decltype(::OleInitialize)>(Library, "OleInitialize");
    return initialize ? initialize(reserved) : E_NOTIMPL;
}

void OleUninitialize() {
    if (auto* uninitialize = SystemProcedure<decltype(::OleUninitialize)>(Library, "OleUninitialize")) {
        uninitialize();
    }
}

} // namespace Platform
