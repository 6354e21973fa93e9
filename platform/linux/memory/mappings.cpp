// All mapping objects are ranges of one anonymous memory file, the page file of this process: so their number is not
// bound by that of descriptors. A range that is not in use any more becomes a hole, which takes no memory and reads as
// zeros, and is handed out again.
#include "platform/inc/mappings.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/memory.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/handles.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unordered_map>

namespace Platform {

/// Ranges of the memory file, each start with the bytes, both multiples of the granularity.
using Ranges = std::map<std::uint64_t, std::uint64_t>;

/// A part of the memory file, which is free again when the mapping object and its views are gone.
struct BackingRange {
    explicit BackingRange(std::uint64_t bytes) : size(bytes) {}
    ~BackingRange();
    BackingRange(const BackingRange&) = delete;
    BackingRange& operator=(const BackingRange&) = delete;

    const std::uint64_t size; // bytes that views may show
    Ranges::node_type place;  // all that was taken for them: giving it back takes no memory
};

namespace {

using RangeReference = std::shared_ptr<const BackingRange>;

struct View {
    std::size_t size;
    RangeReference range;
};

struct PageFile {
    std::mutex lock; // over all of this
    Descriptor descriptor;
    Ranges free; // no two touch
    std::unordered_map<const void*, View> views;
};

// Never destroyed: views may be unmapped by a static object's end.
PageFile& ThePageFile() {
    static PageFile& file = *new PageFile;
    return file;
}

/// Far more than there is memory; holes cost nothing. A limit to the size of files holds for memory files too.
std::uint64_t PageFileSize() {
    constexpr std::uint64_t most = std::uint64_t{1} << 62;
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 ? std::min<std::uint64_t>(limit.rlim_cur, most) : most;
}

bool OpenPageFile(PageFile& file) {
    if (file.descriptor) {
        return true;
    }
    Descriptor fresh(memfd_create("tessarix", MFD_CLOEXEC));
    const std::uint64_t granularity = GetSystemInfo().allocationGranularity;
    const std::uint64_t size = PageFileSize() / granularity * granularity;
    if (!fresh || ftruncate(fresh.Get(), static_cast<off_t>(size)) != 0) {
        return FailFromErrno();
    }
    file.free.emplace(0, size);
    file.descriptor = std::move(fresh);
    return true;
}

/// The first free `bytes` of the page file, and what is missing to a multiple of the granularity. Null with the last
/// error set when there aren't so many in one piece.
RangeReference TakeRange(std::uint64_t bytes) {
    const std::uint64_t granularity = GetSystemInfo().allocationGranularity;
    const std::uint64_t taken = (bytes + granularity - 1) / granularity * granularity;
    auto range = std::make_shared<BackingRange>(bytes);
    Ranges place{{0, taken}};
    PageFile& file = ThePageFile();
    const std::lock_guard guard(file.lock);
    if (!OpenPageFile(file)) {
        return nullptr;
    }
    const auto found =
        std::find_if(file.free.begin(), file.free.end(), [&](const auto& piece) { return piece.second >= taken; });
    if (found == file.free.end()) {
        return Fail(ErrorCommitmentLimit, nullptr);
    }
    auto rest = file.free.extract(found);
    range->place = place.extract(place.begin());
    range->place.key() = rest.key();
    if (rest.mapped() > taken) {
        rest.key() += taken;
        rest.mapped() -= taken;
        file.free.insert(std::move(rest));
    }
    return range;
}

/// Whether a range takes no memory any more.
bool PunchHole(std::uint64_t start, std::uint64_t bytes) {
    constexpr int mode = FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE;
    const int file = ThePageFile().descriptor.Get();
    return Retry([&] { return fallocate(file, mode, static_cast<off_t>(start), static_cast<off_t>(bytes)); }) == 0;
}

/// Makes one of a free range and the one behind it, if they touch.
void JoinNext(Ranges& free, Ranges::iterator range) {
    const auto next = std::next(range);
    if (next != free.end() && range->first + range->second == next->first) {
        range->second += next->second;
        free.erase(next);
    }
}

/// Null with the last error set.
void* MapRange(const RangeReference& range, int protection, std::uint64_t offset, std::size_t size) {
    void* base = mmap(nullptr, size, protection, MAP_SHARED, ThePageFile().descriptor.Get(),
                      static_cast<off_t>(range->place.key() + offset));
    if (base == MAP_FAILED) {
        return FailFromErrno(nullptr);
    }
    try {
        PageFile& file = ThePageFile();
        const std::lock_guard guard(file.lock);
        file.views.emplace(base, View{size, range});
    } catch (const std::bad_alloc&) {
        munmap(base, size);
        return Fail(ErrorNotEnoughMemory, nullptr);
    }
    return base;
}

/// What the kernel could still give, without swapping; false if it doesn't tell.
bool ReadAvailableMemory(std::uint64_t& bytes) {
    PLATFORM_FAULT(ReadAvailableMemory, false);
    constexpr std::string_view name = "MemAvailable:";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/meminfo", "re"), &std::fclose);
    char line[256] = {};
    while (file && std::fgets(line, sizeof(line), file.get())) {
        if (std::string_view(line).starts_with(name)) {
            bytes = std::uint64_t{std::strtoull(line + name.size(), nullptr, 10)} << 10; // it stands in KiB
            return true;
        }
    }
    return false;
}

/// Whether the system's memory and swap could ever hold so much: more is refused, as a page file refuses it.
bool CouldBeFilled(std::uint64_t bytes) {
    struct sysinfo info {};
    return sysinfo(&info) == 0 && bytes <= (std::uint64_t{info.totalram} + info.totalswap) * info.mem_unit;
}

} // namespace

/// What could not be emptied is not handed out again: mapping objects are all zero when they are made.
BackingRange::~BackingRange() {
    if (place.empty() || !PunchHole(place.key(), place.mapped())) {
        return;
    }
    PageFile& file = ThePageFile();
    const std::lock_guard guard(file.lock);
    const auto freed = file.free.insert(std::move(place)).position;
    JoinNext(file.free, freed);
    if (freed != file.free.begin()) {
        JoinNext(file.free, std::prev(freed));
    }
}

Handle CreateFileMapping(Handle file, void*, std::uint32_t protection, std::uint32_t sizeHigh, std::uint32_t sizeLow,
                         const char16_t*) {
    PLATFORM_FAULT(CreateFileMapping, nullptr);
    const std::uint64_t size = std::uint64_t{sizeHigh} << 32 | sizeLow;
    const bool known = protection == PageReadOnly || protection == PageReadWrite;
    if (file != InvalidHandle() || size == 0 || !known) {
        return Fail(ErrorInvalidParameter, nullptr);
    }
    if (!CouldBeFilled(size)) {
        return Fail(ErrorCommitmentLimit, nullptr);
    }
    try {
        auto object = std::make_unique<MappingObject>();
        object->writable = protection == PageReadWrite;
        object->range = TakeRange(size);
        return object->range ? static_cast<HandleObject*>(object.release()) : nullptr;
    } catch (const std::bad_alloc&) {
        return Fail(ErrorNotEnoughMemory, nullptr);
    }
}

void* MapViewOfFile(Handle mapping, std::uint32_t access, std::uint32_t offsetHigh, std::uint32_t offsetLow,
                    std::size_t size) {
    PLATFORM_FAULT(MapViewOfFile, nullptr);
    const MappingObject* object = MappingOf(mapping);
    if (!object) {
        return nullptr;
    }
    const std::uint64_t offset = std::uint64_t{offsetHigh} << 32 | offsetLow;
    const std::uint64_t end = object->range->size;
    const bool write = (access & FileMapWrite) != 0;
    if (offset % GetSystemInfo().allocationGranularity != 0) {
        return Fail(ErrorMappedAlignment, nullptr);
    }
    if (offset >= end || size > end - offset || (write && !object->writable)) {
        return Fail(ErrorAccessDenied, nullptr);
    }
    return MapRange(object->range, write ? PROT_READ | PROT_WRITE : PROT_READ, offset, size == 0 ? end - offset : size);
}

bool UnmapViewOfFile(const void* base) {
    PageFile& file = ThePageFile();
    decltype(file.views)::node_type view;
    {
        const std::lock_guard guard(file.lock);
        view = file.views.extract(base);
    }
    const bool unmapped =
        view ? munmap(const_cast<void*>(base), view.mapped().size) == 0 || FailFromErrno() : Fail(ErrorInvalidAddress);
    PLATFORM_FAULT(UnmapViewOfFile, false);
    return unmapped;
}

bool FlushViewOfFile(const void* base, std::size_t) {
    PLATFORM_FAULT(FlushViewOfFile, false);
    PageFile& file = ThePageFile();
    const std::lock_guard guard(file.lock);
    return file.views.contains(base) || Fail(ErrorInvalidAddress); // a memory file has no medium to reach
}

bool GlobalMemoryStatusEx(MemoryStatus& status) {
    PLATFORM_FAULT(GlobalMemoryStatusEx, false);
    if (status.length != sizeof(MemoryStatus)) {
        return Fail(ErrorInvalidParameter);
    }
    struct sysinfo info {};
    if (sysinfo(&info) != 0) {
        return FailFromErrno();
    }
    if (!ReadAvailableMemory(status.availablePhysical)) {
        // Where /proc is not mounted: what is free already is less than could be made free, but sure.
        status.availablePhysical = (std::uint64_t{info.freeram} + info.bufferram) * info.mem_unit;
    }
    status.totalPhysical = std::uint64_t{info.totalram} * info.mem_unit;
    status.totalPageFile = status.totalPhysical + std::uint64_t{info.totalswap} * info.mem_unit;
    status.availablePageFile = status.availablePhysical + std::uint64_t{info.freeswap} * info.mem_unit;
    return true;
}

} // namespace Platform
