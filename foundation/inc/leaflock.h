// The short lock under the foundation's names.
#pragma once

#include "platform/inc/leaflock.h"

namespace Tsx {

using CLeafLock = Platform::LeafLock;
using CLeafLockGuard = Platform::LeafLockGuard;

} // namespace Tsx
