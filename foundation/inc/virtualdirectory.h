// A directory of the file system in memory, and the tree below it.
#pragma once

#include "foundation/inc/map.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/tree.h"
#include "foundation/inc/virtualfiledata.h"

namespace Tsx {

/// The operations take full paths and start here: as many leading components as this directory's own name has are
/// skipped, and a path with fewer is an internal error. Not locked: the file system does that. A failure leaves the
/// tree as it was, but for directories made on the way.
class CVirtualDirectory : public CTree<CVirtualDirectory>, public CVirtualFileBase {
public:
    explicit CVirtualDirectory(const CUnicodeString& name);
    ~CVirtualDirectory() override;

    /// The directory, or null.
    CVirtualDirectory* FindDirectory(const CUnicodeString& path);
    /// Makes each level that is missing. Null where a check failed.
    CVirtualDirectory* CreateDirectoryPath(const CUnicodeString& path);
    /// The file, or null.
    CVirtualFileData* FindFileData(const CUnicodeString& path);
    /// The file of that name if there is one. Otherwise a new one, and the directories on the way to it: over
    /// `mapping`, which it takes over unless this raises, read-only and `reserve` bytes long, or empty if that is null.
    CVirtualFileData* CreateFileData(const CUnicodeString& path, std::uint32_t attributes, Platform::Handle mapping,
                                     std::int64_t reserve);
    /// The same, but a file of that name is replaced.
    CVirtualFileData* ReplaceFileData(const CUnicodeString& path, std::uint32_t attributes, Platform::Handle mapping,
                                      std::int64_t reserve);
    /// False if there is no such file.
    bool DeleteFileData(const CUnicodeString& path);
    /// With all below it. False if there is no such directory, or if it is the one that the search starts at.
    bool DeleteDirectoryObject(const CUnicodeString& path);
    /// Deletes all below a directory, and tells of each object through DebugTrace. The directory itself stays.
    void ForceDeleteTree(const CUnicodeString& path);

    bool HasEntries() const { return !Files.IsEmpty() || !IsEmpty(); }

    using CFileMap = CMap<CUnicodeString, CVirtualFileData*, CPathKeyTraits, CRuntimeHeapPolicy>;
    using CDirectoryMap = CMap<CUnicodeString, CVirtualDirectory*, CPathKeyTraits, CRuntimeHeapPolicy>;

    CFileMap Files;            // owned, by name and extension
    CDirectoryMap Directories; // by last component; owned by the list of children

private:
    struct CFilePlace {
        CVirtualDirectory* directory;      // null where there is none
        CUnicodeString name;               // the key in it
        CVirtualFileData** file = nullptr; // the key's value; null where there is no such file
    };

    CFilePlace FindPlace(const CUnicodeString& path);
    CVirtualDirectory* GetSubDirectory(const CUnicodeString& name);
    void DeleteEntries();
};

} // namespace Tsx
