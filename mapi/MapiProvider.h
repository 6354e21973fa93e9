// The library that implements Extended MAPI on this machine: found once, then the process's own.
#pragma once

#include "platform/inc/types.h"
#include <atomic>
#include <cstdint>

namespace Mapi {

/// The located library; null until one is found. It stays loaded.
extern std::atomic<Platform::Module> providerModule;
/// Counts how often the library was set, so that an entry bound before knows that it is stale.
extern std::atomic<std::uint32_t> providerGeneration;
/// Leaves out the default mail client and the system's folder. Nothing sets it.
extern bool outlookOnly;

/// The library, searched for if it is not known yet; null if there is none, and then each call searches anew. Any
/// thread: of several that find one at the same time the first one's stays. Raises nothing.
Platform::Module LocateMapiModule();

} // namespace Mapi
