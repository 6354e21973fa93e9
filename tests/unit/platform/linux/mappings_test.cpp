// The page file of this process: what is given back is taken again, whatever the size of a mapping.
#include "platform/inc/mappings.h"

#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/memory.h"
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Platform;

namespace {

constexpr std::uint32_t Unit = 0x10000;

/// Makes a mapping of so many bytes, all zero, and fills it.
Handle MakeFull(std::uint32_t bytes) {
    Handle mapping = CreateFileMapping(InvalidHandle(), nullptr, PageReadWrite, 0, bytes, nullptr);
    auto* view = static_cast<char*>(mapping ? MapViewOfFile(mapping, FileMapWrite, 0, 0, 0) : nullptr);
    EXPECT_TRUE(view && view[0] == 0 && view[bytes - 1] == 0) << bytes;
    if (view) {
        std::memset(view, 'x', bytes);
        EXPECT_TRUE(UnmapViewOfFile(view));
    }
    return mapping;
}

/// The memory that the page file takes, in bytes.
std::int64_t Taken() {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        struct stat status {};
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone).string().starts_with("/memfd:tessarix") &&
            stat(entry.path().c_str(), &status) == 0) {
            return std::int64_t{status.st_blocks} * 512;
        }
    }
    return -1;
}

} // namespace

TEST(PageFile, RangesAreUsedAgain) {
    const rlimit sixteenUnits{rlim_t{16} * Unit, rlim_t{16} * Unit}; // of any file, and no file grows before this line
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &sixteenUnits), 0);
    for (int i = 0; i < 1000; ++i) {
        CloseHandle(MakeFull(i % 2 == 0 ? 5 * Unit : 100));
    }
    EXPECT_EQ(Taken(), 0) << "also the rest of each last page";
    // Given back in every order, neighbours become one again.
    std::size_t order[] = {0, 1, 2};
    do {
        Handle parts[] = {MakeFull(4 * Unit + 1), MakeFull(10), MakeFull(10 * Unit)};
        for (const std::size_t part : order) {
            CloseHandle(parts[part]);
        }
        CloseHandle(MakeFull(16 * Unit));
    } while (std::next_permutation(std::begin(order), std::end(order)));
    EXPECT_EQ(Taken(), 0);
    EXPECT_FALSE(CreateFileMapping(InvalidHandle(), nullptr, PageReadWrite, 0, 17 * Unit, nullptr));
}

TEST(PageFile, NoMoreIsPromisedThanCouldEverBeFilled) {
    MemoryStatus status;
    for (const std::int32_t call : {2, 1}) { // with /proc and without it
        ArmFault("ReadAvailableMemory", call, 2, FaultMode::Once);
        EXPECT_TRUE(GlobalMemoryStatusEx(status));
        DisarmFaults();
        EXPECT_TRUE(status.availablePhysical > 0 && status.availablePhysical <= status.totalPhysical);
        EXPECT_LE(status.availablePageFile, status.totalPageFile);
    }
    status.length = 0;
    EXPECT_FALSE(GlobalMemoryStatusEx(status));
    const std::uint64_t size = status.totalPageFile + 1;
    EXPECT_FALSE(CreateFileMapping(InvalidHandle(), nullptr, PageReadWrite, static_cast<std::uint32_t>(size >> 32),
                                   static_cast<std::uint32_t>(size), nullptr));
    EXPECT_EQ(GetLastError(), ErrorCommitmentLimit);
}
