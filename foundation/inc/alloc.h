// All of the foundation's memory management.
#pragma once

#include "foundation/inc/blockmanager.h"  // IWYU pragma: export
#include "foundation/inc/heapmanager.h"   // IWYU pragma: export
#include "foundation/inc/memorymanager.h" // IWYU pragma: export
