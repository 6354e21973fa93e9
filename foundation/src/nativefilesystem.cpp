#include "foundation/inc/nativefilesystem.h"

#include "foundation/inc/assertion.h"
#include "platform/inc/directories.h"
#include "platform/inc/types.h"

namespace Tsx {

namespace {

// Keeps the system from asking for a medium in a drive that has none.
class CErrorModeScope {
public:
    CErrorModeScope() : previous(Platform::SetErrorMode(0)) {
        Platform::SetErrorMode(previous | Platform::SemFailCriticalErrors | Platform::SemNoOpenFileErrorBox);
    }
    ~CErrorModeScope() { Platform::SetErrorMode(previous); }
    CErrorModeScope(const CErrorModeScope&) = delete;
    CErrorModeScope& operator=(const CErrorModeScope&) = delete;

private:
    std::uint32_t previous;
};

bool Exists(const CUnicodeString& path) {
    const CErrorModeScope scope;
    Platform::FindData data;
    const Platform::Handle search = Platform::FindFirstFile(path.Text(), data);
    if (search == Platform::InvalidHandle()) {
        return false;
    }
    Platform::FindClose(search);
    return true;
}

} // namespace

bool CNativeFileSystem::CheckFile(const CUnicodeString& path, std::uint32_t mode) {
    TSX_ASSERT(mode == FA_Exists, u"src\\nativefilesystem");
    return !path.IsEmpty() && Exists(path);
}

} // namespace Tsx
