#include "foundation/inc/heapmanager.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/debug.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\alloc";

// AS DESIGNED: asked, once, although the program starts on no system before version 6.0.
bool SystemHasLowFragmentation() {
    static const bool has = [] {
        const Platform::OsVersion version = Platform::GetVersionEx();
        return version.platformId == 2 && (version.major > 5 || (version.major == 5 && version.minor != 0));
    }();
    return has;
}

} // namespace

CHeapManager::~CHeapManager() {
    if (Heap) {
        GuardDestructor([this] { CHeapManager::ReportLeaks(); });
        GuardDestructor([this] { CHeapManager::DestroyHeap(); });
    }
}

void CHeapManager::CreateHeap(std::size_t initialSize, bool destroyIfNotEmpty) {
    Heap = Platform::HeapCreate(0, initialSize, 0);
    if (!Heap) {
        GenerateMemoryException();
    }
    BlockCount = 0;
    TotalBytes = 0;
    DestroyIfNotEmpty = destroyIfNotEmpty;
}

void* CHeapManager::Alloc(std::int32_t size) {
    void* block = AllocUncounted(size);
    Count(1, size);
    return block;
}

void CHeapManager::Free(void* block) {
    if (block) {
        Count(-1, -FreeUncounted(block));
    }
}

void* CHeapManager::AllocUncounted(std::int32_t size) const {
    void* block = Platform::HeapAlloc(Heap, 0, static_cast<std::size_t>(size));
    if (!block) {
        GenerateMemoryException();
    }
    return block;
}

std::int32_t CHeapManager::FreeUncounted(void* block) const noexcept {
    const std::size_t size = Platform::HeapSize(Heap, 0, block);
    Platform::HeapFree(Heap, 0, block);
    return size != ~std::size_t{0} ? static_cast<std::int32_t>(size) : 0;
}

void CHeapManager::SetLowFragmentation() {
    TSX_REQUIRE(Heap, ModuleName);
    if (SystemHasLowFragmentation()) {
        TSX_ASSERT(Platform::SetHeapLowFragmentation(Heap), ModuleName);
    }
}

void CHeapManager::ReportLeaks() {
    TSX_REQUIRE(Heap, ModuleName);
    if (BlockCount == 0) {
        return;
    }
    const CRuntimeHeapSwitcher switcher;
    if (HasDebugFlag(DebugWalkHeapForLeaks)) {
        WalkLeaks();
    }
    if (HasDebugFlag(DebugShowHeapMemoryLeaks)) {
        CRoomyBuffer buffer;
        AskToBreak(FormatLine(buffer,
                              u"Internal error: memory leak.\n\nHeap 0x%p ( CHeapManager object at %s ) is not empty.",
                              {static_cast<const void*>(Heap), CUnicodeString::DescribeAddress(this)}));
    }
}

void CHeapManager::WalkLeaks() const {
    if (!Platform::HeapLock(Heap)) {
        FailAssertionWithLastError(ModuleName, __LINE__);
        return;
    }
    const CScopeExit unlock([this] { Platform::HeapUnlock(Heap); });
    CRoomyBuffer buffer; // and no string: its block could come from the very heap that is walked
    Platform::HeapEntry entry;
    while (Platform::HeapWalk(Heap, entry)) {
        if ((entry.flags & Platform::HeapEntryBusy) != 0) {
            WriteDebugOutput(FormatLine(buffer, u"Undeleted memory block in heap manager. Address: %p\n",
                                        {static_cast<const void*>(entry.data)}));
        }
    }
}

void CHeapManager::DestroyHeap() {
    if (!Heap || (BlockCount != 0 && !DestroyIfNotEmpty)) {
        return;
    }
    BlockCount = 0;
    TotalBytes = 0;
    TSX_ASSERT(Platform::HeapDestroy(std::exchange(Heap, nullptr)), ModuleName); // a failure is not to be tried again
}

} // namespace Tsx
