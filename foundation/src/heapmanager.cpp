#include "foundation/inc/heapmanager.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/debug.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\alloc";

// From version 5.1 of the NT family on; asked once.
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
        GuardDestructor([this] {
            CHeapManager::ReportLeaks();
            CHeapManager::DestroyHeap();
        });
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
    void* block = Platform::HeapAlloc(Heap, 0, static_cast<std::size_t>(size));
    if (!block) {
        GenerateMemoryException();
    }
    TotalBytes += size;
    ++BlockCount;
    return block;
}

void CHeapManager::Free(void* block) {
    if (!block) {
        return;
    }
    const std::size_t size = Platform::HeapSize(Heap, 0, block);
    if (size != ~std::size_t{0}) {
        TotalBytes -= static_cast<std::int32_t>(size);
    }
    Platform::HeapFree(Heap, 0, block);
    --BlockCount;
}

void CHeapManager::SetLowFragmentation() {
    TSX_ASSERT(Heap, ModuleName);
    if (SystemHasLowFragmentation()) {
        TSX_ASSERT(Platform::SetHeapLowFragmentation(Heap), ModuleName);
    }
}

void CHeapManager::ReportLeaks() {
    TSX_ASSERT(Heap, ModuleName);
    if (BlockCount == 0) {
        return;
    }
    const CRuntimeHeapSwitcher switcher;
    if (HasDebugFlag(DebugWalkHeapForLeaks)) {
        WalkLeaks();
    }
    if (HasDebugFlag(DebugShowHeapMemoryLeaks)) {
        const CUnicodeString text = CUnicodeString::Format(
            u"Internal error: memory leak.\n\nHeap 0x%p ( CHeapManager object at %s ) is not empty.",
            static_cast<const void*>(Heap), CUnicodeString::DescribeAddress(this));
        AskToBreak(text.Text());
    }
}

void CHeapManager::WalkLeaks() const {
    TSX_ASSERT_CALL(Platform::HeapLock(Heap), ModuleName);
    Platform::HeapEntry entry;
    while (Platform::HeapWalk(Heap, entry)) {
        if ((entry.flags & Platform::HeapEntryBusy) != 0) {
            WriteDebugOutput(CUnicodeString::Format(u"Undeleted memory block in heap manager. Address: %p\n",
                                                    static_cast<const void*>(entry.data))
                                 .Text());
        }
    }
    Platform::HeapUnlock(Heap);
}

void CHeapManager::DestroyHeap() {
    if (BlockCount != 0 && !DestroyIfNotEmpty) {
        return;
    }
    TSX_ASSERT(Platform::HeapDestroy(Heap), ModuleName);
    Heap = nullptr;
    BlockCount = 0;
    TotalBytes = 0;
}

} // namespace Tsx
