// Transfers over a descriptor that go on until they are whole, whatever signal breaks them off and however little a
// call moves at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Platform {

/// The most that is read of what has no length, in bytes: above what mail carries, and below what an endless device
/// could do harm with.
constexpr std::int64_t LargestWithoutLength = std::int64_t{256} << 20;

/// Writes all bytes. The count that was written: less than `count` only after a failure, with errno set.
std::size_t WriteWhole(int descriptor, const void* bytes, std::size_t count);

/// Writes what `source` gives up to its end behind what `target` has. False with errno set: EFBIG for a source that
/// has more than `limit` bytes.
bool CopyContent(int source, int target, std::int64_t limit = std::numeric_limits<std::int64_t>::max());

/// Brings what was written to the disk. False with errno set.
bool Flush(int descriptor);

} // namespace Platform
