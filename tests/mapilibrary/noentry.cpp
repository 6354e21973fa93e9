// A library under the MAPI library's name that lacks the entry for sending.
#include <cstdint>

extern "C" PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void*) {
    return 0;
}
