// The body of a virtual file: what its directory keeps of it, and the mappings that hold its bytes.
#pragma once

#include "foundation/inc/criticalsection.h"
#include "foundation/inc/filemapping.h"
#include "foundation/inc/filesystembase.h"
#include "foundation/inc/list.h"
#include "foundation/inc/memorymanager.h"
#include "foundation/inc/pointerarray.h"
#include "foundation/inc/time.h"
#include <memory>

namespace Tsx {

/// What virtual files and directories have in common. All times are that of the construction until they are set.
class CVirtualFileBase : public CAllocatedOn<RuntimeHeap> {
public:
    /// `name` is the full path; an empty one is an internal error.
    CVirtualFileBase(const CUnicodeString& name, std::uint32_t attributes);
    virtual ~CVirtualFileBase() = default;
    CVirtualFileBase(const CVirtualFileBase&) = delete;
    CVirtualFileBase& operator=(const CVirtualFileBase&) = delete;

    void FillStatus(CFileStatus& status) const;

    /// `Size`, which handles set while other threads list the directory.
    std::int64_t LoadSize() const;
    void StoreSize(std::int64_t size);

    CUnicodeString Name;
    std::uint32_t Attributes;
    TTime CreationTime;
    TTime LastAccessTime;
    TTime LastWriteTime;
    std::int64_t Size = 0; // bytes; of a directory 0
};

/// The mapping of a virtual file.
class CVirtualMemoryMapping : public CMemoryMapping, public CAllocatedOn<RuntimeHeap> {
public:
    using CMemoryMapping::CMemoryMapping;
    /// Closed, for Attach.
    CVirtualMemoryMapping() = default;
};

/// One stretch of a file's address range. Any thread.
class CVirtualMapping : public CListNode<CVirtualMapping>, public CAllocatedOn<RuntimeHeap> {
public:
    CVirtualMapping(std::unique_ptr<CMemoryMapping> mapping, std::int64_t start, std::int64_t size);

    /// Maps ViewSize bytes from an offset on, or those that are left, and returns the first.
    void* MapView(std::int64_t offset);
    /// Takes what MapView returned.
    void UnmapView(void* data);

    const std::unique_ptr<CMemoryMapping> Mapping; // never null
    const std::int64_t Start;                      // in the file
    const std::int64_t Size;                       // bytes

private:
    CCriticalSection Lock; // over the views of Mapping
};

/// Lives in its directory until it is deleted. Its handles may be on several threads: the range that is backed grows
/// under a lock, and never shrinks.
class CVirtualFileData : public CVirtualFileBase {
public:
    /// A file without bytes, whose first mapping will have `reserve` of them or more.
    CVirtualFileData(const CUnicodeString& name, std::uint32_t attributes, std::int64_t reserve);
    /// A read-only file over a mapping made elsewhere, which it takes over unless the constructor raises.
    CVirtualFileData(const CUnicodeString& name, std::uint32_t attributes, Platform::Handle mapping, std::int64_t size);

    /// The mapping that holds a position. Where there is none the range grows, by half of what it has but no more than
    /// a tenth of the page file that is left, and at least up to the position. Mappings are whole units of 64 KiB:
    ///
    ///   Reservation 1,000,000, position 0        1,048,576 bytes
    ///   the next one, at position 1,048,576      524,288
    ///   the next one, at position 1,572,864      786,432
    ///   Capacity 65,536, position 131,072        65,536, which end at the position
    ///
    /// AS DESIGNED: the last row: the way to the position is counted without the byte at it, so that after a jump of
    /// whole units the answer may end where the position is. Another call goes on from there.
    CVirtualMapping* GetMapping(std::int64_t position);

    std::uint32_t Writable;   // 0 or 1, of each mapping to make
    std::int64_t Reservation; // size of the first one
    std::int64_t Capacity = 0;
    // By Start, without gaps; Capacity is the sum of their sizes.
    CPointerArray<CVirtualMapping, std::default_delete<CVirtualMapping>, CRuntimeHeapPolicy> Mappings;

private:
    CCriticalSection Lock; // over Capacity and Mappings; the system is asked for memory inside it

    CVirtualMapping* AddMapping(std::int64_t leastSize);
    std::int64_t GetGrowth() const;
};

} // namespace Tsx
