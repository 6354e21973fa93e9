// Owners of memory that the MAPI library allocates and frees, for the wrappers of mapi/.
#pragma once

#include "mapi/FaultCleanup.h"
#include "mapi/MapiEntries.h"

namespace Mapi {

struct CBufferOwner {
    static void Release(void* buffer) { MAPIFreeBuffer(buffer); }
};

/// A block of MAPIAllocateBuffer, with the blocks that the MAPI library linked to it.
template <class T>
using CMapiBuffer = CHeld<T, CBufferOwner>;

struct CRowsOwner {
    static void Release(SRowSet* rows) { FreeProws(rows); }
};

/// The rows of a table, with their properties.
using CMapiRows = CHeld<SRowSet, CRowsOwner>;

/// Allocates with MAPIAllocateBuffer; never null.
template <class T>
T* AllocateMapiBuffer(std::uint32_t size) {
    void* buffer = nullptr;
    CheckResult(MAPIAllocateBuffer(size, &buffer));
    return static_cast<T*>(Required(buffer));
}

} // namespace Mapi
