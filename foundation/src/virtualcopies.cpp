// Copies and moves of which at least one end is in memory. A target that could not be filled is deleted: half a file
// must not be taken for a whole one, and a move deletes its source only after a copy that is complete.
#include "foundation/inc/errors.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/virtualfilesystem.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/lasterror.h"
#include <cstddef>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualcopies";

constexpr std::uint32_t SourceMode = OM_Read | OM_ShareDenyWrite;
constexpr std::uint32_t TargetMode = OM_Write | OM_ShareExclusive | OM_Create;

/// The file that a copy is made in. A native file says nothing of a write that a full disk took a part of: only the
/// position tells. What is left is offered once more, and then refused.
class CTargetFile : public CFile {
public:
    void Write(const void* buffer, std::int32_t count) override {
        const auto* bytes = static_cast<const std::byte*>(buffer);
        const std::int64_t end = GetPosition() + count;
        for (std::int64_t left = count; left > 0;) {
            CFile::Write(bytes + count - left, static_cast<std::int32_t>(left));
            const std::int64_t rest = end - GetPosition();
            if (rest < 0 || rest >= left) {
                GenerateFileException(Platform::ErrorDiskFull, GetFileName());
            }
            left = rest;
        }
    }
};

/// A CFile whose path lies under the root once it has been made absolute.
CVirtualFile& VirtualFileOf(const CFile& file) {
    auto* virtualFile = dynamic_cast<CVirtualFile*>(file.GetOpenFile());
    TSX_ASSERT(virtualFile, ModuleName);
    if (!virtualFile) {
        GenerateUserException(); // the failure has been shown
    }
    return *virtualFile;
}

/// Opens the target anew, fills it, and closes it; deletes it if it could be opened but not filled or not closed.
template <class TFill>
void FillTarget(const CUnicodeString& path, std::int64_t reserve, TFill fill) {
    CTargetFile target;
    target.Open(path, TargetMode, Platform::FileAttributeNormal, reserve);
    try {
        fill(target);
        target.Close();
    } catch (...) {
        GuardDestructor([&] {
            target.Abort();
            FileSystem::GetFileSystem(path).TryDeleteFile(path);
        });
        throw;
    }
}

} // namespace

void CVirtualFileSystem::CopyFile(const CUnicodeString& target, const CUnicodeString& source) {
    const CCriticalSectionLock guard(Lock);
    if (FileSystem::IsVirtualPath(target)) {
        CopyIn(target, source);
    } else {
        TSX_REQUIRE(FileSystem::IsVirtualPath(source), ModuleName);
        CopyOut(target, source);
    }
}

void CVirtualFileSystem::CopyIn(const CUnicodeString& target, const CUnicodeString& source) {
    const bool within = FileSystem::IsVirtualPath(source);
    CFile from;
    from.Open(source, SourceMode, within ? Platform::FileAttributeReadOnly : Platform::FileAttributeNormal);
    FillTarget(target, from.GetLength(), [&](CFile& to) {
        if (within) {
            VirtualFileOf(from).SaveTo(to);
        } else {
            VirtualFileOf(to).LoadFrom(from);
        }
    });
}

void CVirtualFileSystem::CopyOut(const CUnicodeString& target, const CUnicodeString& source) {
    CFile from;
    from.Open(source, SourceMode, Platform::FileAttributeReadOnly);
    const auto save = [&](CFile& to) {
        VirtualFileOf(from).SaveTo(to);
    };
    try {
        FillTarget(target, 0, save);
        return;
    } catch (CFileException* exception) {
        delete exception;
    }
    // The failure may not tell what is wrong with the target. Find that, or take away a target that stands in the way.
    CFileSystemBase& system = FileSystem::GetFileSystem(target);
    CheckWritable(system, target);
    if (system.CheckFile(target, FA_Exists)) {
        system.DeleteFile(target);
    }
    FillTarget(target, 0, save);
}

void CVirtualFileSystem::MoveFile(const CUnicodeString& target, const CUnicodeString& source) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(target) || FileSystem::IsVirtualPath(source), ModuleName);
    CopyFile(target, source);
    FileSystem::GetFileSystem(source).DeleteFile(source);
}

void CVirtualFileSystem::MoveFileOnVolume(const CUnicodeString& target, const CUnicodeString& source) {
    MoveFile(target, source);
}

void CVirtualFileSystem::RenameFile(const CUnicodeString& source, const CUnicodeString& target) {
    MoveFile(target, source);
}

} // namespace Tsx
