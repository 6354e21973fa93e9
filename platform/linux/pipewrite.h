// Writing where the reader may be gone.
#pragma once

#include <cstddef>
#include <sys/types.h>

namespace Platform {

/// write(), but a pipe without a reader is a failure (EPIPE) and no signal, which would end the process.
ssize_t WriteWithoutSignal(int descriptor, const void* bytes, std::size_t count);

} // namespace Platform
