// The library that implements Extended MAPI on this machine, which the names here call the provider: found once, then
// kept to the end of the process. MapiEntries.cpp looks its functions up in it.
#pragma once

#include "platform/inc/types.h"
#include <atomic>
#include <cstdint>

namespace Mapi {

// The state of the search. LocateMapiModule alone writes the first two, and nothing in this program the third.

/// The located library; null until one is found. It stays loaded.
extern std::atomic<Platform::Module> providerModule;
/// Counts how often the library was set; an entry that was bound under another count is looked up again.
extern std::atomic<std::uint32_t> providerGeneration;
/// True leaves the default mail client and the system's folder out of the search.
extern bool outlookOnly;

/// The library, searched for if it is not known yet; null if there is none, and then each call searches anew. For any
/// thread: if several find a library at the same time, the first one's stays. Raises nothing.
Platform::Module LocateMapiModule();

} // namespace Mapi
