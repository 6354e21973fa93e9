// The file system over the platform's files.
#pragma once

#include "foundation/inc/filesystem.h"

namespace Tsx {

class CNativeFileSystem : public CFileSystemBase {
public:
    /// FA_Exists is the only mode so far. No box appears for a drive without a medium.
    bool CheckFile(const CUnicodeString& path, std::uint32_t mode) override;
};

} // namespace Tsx
