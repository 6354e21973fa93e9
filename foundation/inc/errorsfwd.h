// The failures that the basic types raise, declared apart so that these types need not know the exceptions.
#pragma once

namespace Tsx {

class CException;

/// Raises CMemoryException. Every failed allocation of the foundation ends here.
[[noreturn]] void GenerateMemoryException();

} // namespace Tsx
