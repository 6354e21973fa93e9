// Fault injection where there is none: in release builds, and on Windows, whose layer only forwards to the system.
#include "platform/inc/faults.h"

namespace Platform {

bool FaultsAvailable() {
    return false;
}

void ArmFault(const char*, std::int32_t, std::uint32_t, FaultMode) {}

void DisarmFaults() {}

void ArmShortTransfers(std::uint32_t) {}

std::int32_t FaultCallsSeen() {
    return 0;
}

} // namespace Platform
