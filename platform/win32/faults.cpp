// This layer forwards to the system and has no hook: fault sweeps run on Linux.
#include "platform/inc/faults.h"

namespace Platform {

bool FaultsAvailable() {
    return false;
}

void ArmFault(const char*, std::int32_t, std::uint32_t, FaultMode) {}

void DisarmFaults() {}

std::int32_t FaultCallsSeen() {
    return 0;
}

} // namespace Platform
