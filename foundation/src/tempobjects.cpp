// Temporary files and directories: two sets of paths, which the shutdown of the foundation sweeps, and the folder that
// they are made in.
#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/memorymanager.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/src/statics.h"

namespace Tsx {

namespace {

/// Deletes each object of a set. One that cannot be deleted stays in the set and is traced.
template <class TDelete>
void Sweep(CPathSet& paths, const char16_t* warning, TDelete deleteObject) {
    for (auto entry = paths.begin(); entry != paths.end();) {
        const CUnicodeString path = (entry++)->Key; // a copy, for the set's own is deleted with the entry
        try {
            deleteObject(FileSystem::GetFileSystem(path), path);
            paths.Delete(path);
        } catch (CException* exception) {
            delete exception;
            ReleaseTrace(warning, path);
        }
    }
}

} // namespace

void CNativeFileSystem::SetTemporaryFolder(const CUnicodeString& path) {
    const CCriticalSectionLock guard(TemporaryFilesLock);
    const CRuntimeHeapSwitcher switcher; // the text outlives the calling thread and its heap
    TemporaryFolder = path;
}

void CNativeFileSystem::ReleaseTemporaryObjects() {
    const CCriticalSectionLock guard(TemporaryFilesLock);
    TemporaryFolder.Clear();
    if (HasDebugFlag(DebugKeepTempFiles)) {
        TemporaryFiles.DeleteAll();
        TemporaryDirectories.DeleteAll();
        return;
    }
    Sweep(TemporaryFiles, u"Warning: Can't delete temporary file %s\n",
          [](CFileSystemBase& system, const CUnicodeString& path) { system.DeleteFile(path); });
    Sweep(TemporaryDirectories, u"Warning: Can't delete temporary directory %s\n",
          [](CFileSystemBase& system, const CUnicodeString& path) { system.DeleteTree(path, false); });
}

} // namespace Tsx
