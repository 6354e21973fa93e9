// The handle types that cross the platform border. They are opaque above it: compared, stored and handed back, never
// looked into.
#pragma once

#include <cstdint>

namespace Platform {

/// An open file, search, mapping, console or process object: the system's HANDLE.
using Handle = void*;

/// A loaded program or library: the system's HMODULE. Null stands for the program itself where an operation says so.
using Module = struct ModuleObject*;

/// A window. The Linux layer has none and takes any value.
using Window = struct WindowObject*;

/// An entry point of a library, to be cast to its real type by the caller.
using Procedure = void (*)();

/// INVALID_HANDLE_VALUE: all bits set.
inline Handle InvalidHandle() {
    return reinterpret_cast<Handle>(~std::uintptr_t{0}); // NOLINT(performance-no-int-to-ptr): the published value
}

} // namespace Platform
