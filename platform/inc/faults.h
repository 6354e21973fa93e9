// Fault injection for tests: "the n-th call of this function fails with this code, once or from then on". Compiled into
// the Linux layer of test builds; a release build has the declarations and nothing behind them, and FaultsAvailable
// says so.
#pragma once

#include <cstdint>

namespace Platform {

enum class FaultMode { Once, FromThenOn };

/// True in builds that have the hook.
bool FaultsAvailable();

/// Makes the `nth` call (from 1) of the platform function `function` fail with `code`; "allocation" counts all calls
/// that allocate memory, "*" the calls of all functions, "new" what the standard library is asked for. Replaces any
/// plan before it. A plan is for the whole process and safe to reach from any thread. The same plan can be given to a
/// process in the environment variable TESSARIX_FAULT as "function:nth:code:once" or "function:nth:code:on"; the calls
/// that matched go to the file that TESSARIX_FAULT_CALLS names when the process ends.
void ArmFault(const char* function, std::int32_t nth, std::uint32_t code, FaultMode mode);
void DisarmFaults();

/// From now on ReadFile and WriteFile move at most `most` bytes a call and succeed, as a slow pipe would make them; 0
/// takes that back, and so does DisarmFaults. For a whole process: TESSARIX_SHORT_TRANSFERS=1 in the environment.
void ArmShortTransfers(std::uint32_t most);

/// Calls that matched the plan so far, failed ones included: a sweep ends when this stays below the n it asked for.
std::int32_t FaultCallsSeen();

} // namespace Platform
