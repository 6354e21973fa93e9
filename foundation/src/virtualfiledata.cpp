#include "foundation/inc/virtualfiledata.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/makeobject.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/mappings.h"
#include <algorithm>
#include <atomic>
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualfiledata";

TTime LocalTimeNow() {
    Platform::SystemTime now{};
    Platform::GetLocalTime(now);
    return TimeFromLocalSystemTime(now);
}

} // namespace

CVirtualFileBase::CVirtualFileBase(const CUnicodeString& name, std::uint32_t attributes)
    : Name(name), Attributes(attributes), CreationTime(LocalTimeNow()), LastAccessTime(CreationTime),
      LastWriteTime(CreationTime) {
    TSX_ASSERT(!name.IsEmpty(), ModuleName);
}

void CVirtualFileBase::FillStatus(CFileStatus& status) const {
    status.CreationTime = CreationTime;
    status.LastWriteTime = LastWriteTime;
    status.LastAccessTime = LastAccessTime;
    status.Size = LoadSize();
    status.Attributes = Attributes;
    status.FullName = Name;
    status.Name = FileSystem::GetNameAndExt(Name);
}

std::int64_t CVirtualFileBase::LoadSize() const {
    return std::atomic_ref(const_cast<std::int64_t&>(Size)).load(std::memory_order_relaxed);
}

void CVirtualFileBase::StoreSize(std::int64_t size) {
    std::atomic_ref(Size).store(size, std::memory_order_relaxed);
}

CVirtualMapping::CVirtualMapping(std::unique_ptr<CMemoryMapping> mapping, std::int64_t start, std::int64_t size)
    : Mapping(std::move(mapping)), Start(start), Size(size) {
    TSX_ASSERT(Mapping, ModuleName);
}

void* CVirtualMapping::MapView(std::int64_t offset) {
    TSX_REQUIRE(offset >= 0 && ViewSize >= 1 && Mapping && Mapping->IsOpen(), ModuleName, nullptr);
    const auto length = static_cast<std::int32_t>(std::min(ViewSize, Size - offset));
    const CCriticalSectionLock guard(Lock);
    return Mapping->MapView(Mapping->Writable ? Platform::FileMapWrite : Platform::FileMapRead, offset, length);
}

void CVirtualMapping::UnmapView(void* data) {
    const CCriticalSectionLock guard(Lock);
    Mapping->UnmapView(data);
}

CVirtualFileData::CVirtualFileData(const CUnicodeString& name, std::uint32_t attributes, std::int64_t reserve)
    : CVirtualFileBase(name, attributes), Writable((attributes & Platform::FileAttributeReadOnly) == 0 ? 1 : 0),
      Reservation(reserve) {
    TSX_ASSERT(reserve >= 0, ModuleName);
}

CVirtualFileData::CVirtualFileData(const CUnicodeString& name, std::uint32_t attributes, Platform::Handle mapping,
                                   std::int64_t size)
    : CVirtualFileBase(name, attributes), Writable(0), Reservation(size), Capacity(size) {
    TSX_ASSERT(size >= 0, ModuleName);
    Size = size;
    auto memory = MakeObject<CVirtualMemoryMapping>();
    CMemoryMapping* attached = memory.get();
    auto stretch = MakeObject<CVirtualMapping>(std::move(memory), 0, size);
    Mappings.Append(stretch.get());
    stretch.release(); // NOLINT(bugprone-unused-return-value): owned by Mappings from here on
    attached->Attach(mapping);
}

CVirtualMapping* CVirtualFileData::GetMapping(std::int64_t position) {
    TSX_REQUIRE(position >= 0, ModuleName, nullptr);
    const CCriticalSectionLock guard(Lock);
    for (CVirtualMapping* mapping : Mappings) {
        if (position < mapping->Start) {
            break;
        }
        if (position - mapping->Start < mapping->Size) {
            return mapping;
        }
    }
    if (Capacity == 0) {
        CVirtualMapping* first = AddMapping(std::max(Reservation, MappingUnit));
        if (position < Capacity) {
            return first;
        }
    }
    TSX_REQUIRE(position >= Capacity, ModuleName, nullptr);
    TSX_REQUIRE(Capacity >= MappingUnit, ModuleName, nullptr);
    return AddMapping(std::max(GetGrowth(), position - Capacity));
}

std::int64_t CVirtualFileData::GetGrowth() const {
    Platform::MemoryStatus status;
    TSX_ASSERT_CALL(Platform::GlobalMemoryStatusEx(status), ModuleName);
    return std::min(Capacity / 2, static_cast<std::int64_t>(status.availablePageFile / 10));
}

/// As many bytes at the end of the range, rounded up to whole units.
CVirtualMapping* CVirtualFileData::AddMapping(std::int64_t leastSize) {
    if (leastSize > std::numeric_limits<std::int64_t>::max() - Capacity - MappingUnit) {
        GenerateFileException(Platform::ErrorDiskFull, Name); // more than positions can count
    }
    const std::int64_t size = (leastSize + MappingUnit - 1) / MappingUnit * MappingUnit;
    auto stretch = MakeObject<CVirtualMapping>(MakeObject<CVirtualMemoryMapping>(Writable, size), Capacity, size);
    Mappings.Append(stretch.get());
    Capacity += size;
    return stretch.release();
}

} // namespace Tsx
