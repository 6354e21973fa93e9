// What tests of the file system in memory share: short names for what they do all the time.
#pragma once

#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/virtualfilesystem.h"
#include "tests/support/text.h"
#include <functional>
#include <string>

namespace Tsx {

inline constexpr std::uint32_t ReadMode = OM_Read | OM_ShareDenyWrite;
inline constexpr std::uint32_t WriteMode = OM_Write | OM_ShareExclusive | OM_Create;

inline CVirtualFileSystem& System() {
    return dynamic_cast<CVirtualFileSystem&>(FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName()));
}

inline CUnicodeString Path(const char16_t* name) {
    return CVirtualFileSystem::GetRootName() + name;
}

inline void Write(const CUnicodeString& path, const std::string& content = "x") {
    CFile file;
    file.Open(path, WriteMode);
    file.Write(content.data(), static_cast<std::int32_t>(content.size()));
}

inline std::string Content(const CUnicodeString& path) {
    if (!System().CheckFile(path, FA_Exists)) {
        return "(missing)";
    }
    CFile file;
    file.Open(path, OM_Read | OM_ShareDenyNone);
    std::string content(static_cast<std::size_t>(file.GetLength32()), '\0');
    file.Read(content.data(), file.GetLength32());
    return content;
}

/// The code of the CFileException that an action raises, or its cause above 1000 if it has none; 0 for nothing.
inline std::uint32_t Code(const std::function<void()>& action) {
    const auto failure = Raised<CFileException>(action);
    return !failure ? 0 : failure->lastError != 0 ? failure->lastError : 1000 + failure->cause;
}

} // namespace Tsx
