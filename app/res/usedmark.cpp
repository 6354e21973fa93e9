// The mark that the executable is built on Tessarix.
#include <cstdint>

extern "C" {
// NOLINTNEXTLINE(bugprone-reserved-identifier): tools outside look for this very symbol; its value means nothing
PLATFORM_EXPORT extern std::int32_t __TessarixUsed;
std::int32_t __TessarixUsed = 0; // NOLINT(bugprone-reserved-identifier)
}
