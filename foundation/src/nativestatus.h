// What the search and the status of a native file both tell.
#pragma once

#include "foundation/inc/filesystembase.h"
#include "platform/inc/fileattributes.h"

namespace Tsx {

/// The times, the size and the attributes; a negative time is an internal error.
void TakeFileData(CFileStatus& status, const Platform::FileAttributeData& data);

} // namespace Tsx
