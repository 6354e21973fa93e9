#include "platform/inc/ole.h"

#include "platform/linux/faulthook.h"

namespace Platform {

std::int32_t OleInitialize(void*) {
    PLATFORM_FAULT(OleInitialize, static_cast<std::int32_t>(0x80004005)); // E_FAIL
    return 0;
}

void OleUninitialize() {}

} // namespace Platform
