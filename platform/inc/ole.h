// OLE on the calling thread. A system without it has nothing to start, and both calls succeed there.
#pragma once

#include <cstdint>

namespace Platform {

/// Makes the calling thread one that may use OLE; an HRESULT. Each success, "already started" included, is matched by
/// one OleUninitialize on the same thread. `reserved` is null.
std::int32_t OleInitialize(void* reserved);
void OleUninitialize();

} // namespace Platform
