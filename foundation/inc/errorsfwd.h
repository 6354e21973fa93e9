// The failure that strings, arrays and memory managers raise, declared apart so that they need not include errors.h.
#pragma once

namespace Tsx {

class CException;

/// Raises CMemoryException. Every failed allocation of the foundation ends here.
[[noreturn]] void GenerateMemoryException();

} // namespace Tsx
