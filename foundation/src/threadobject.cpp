#include "foundation/inc/threadobject.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/scopeexit.h"
#include "platform/inc/files.h"
#include "platform/inc/process.h"
#include "platform/inc/threads.h"
#include <memory>
#include <new>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\threadobject";

} // namespace

constinit CThreadRecord CThreadObjectFamily::BeingMade{};

void CThreadRecord::Destroy(CThreadRecord* record) {
    if (record->thread) {
        Platform::CloseHandle(record->thread);
    }
    FreeToProcessHeap(record);
}

void CThreadObjectRegistry::CFreeArray::operator()(CThreadArray* array) const {
    array->~CThreadArray();
    FreeToProcessHeap(array);
}

CThreadRecord*& CThreadObjectRegistry::Place(std::int32_t index) {
    auto* array = static_cast<CThreadArray*>(Get());
    if (!array) {
        std::unique_ptr<CThreadArray, CFreeArray> fresh(new (AllocateFromProcessHeap(sizeof(CThreadArray)))
                                                            CThreadArray);
        const CCriticalSectionLock guard(RegistryLock);
        ThreadArrays.Append(fresh.get());
        array = fresh.release();
        Set(array);
    }
    if (index >= array->Size()) {
        array->SetSize(index + 1);
    }
    return (*array)[index];
}

void CThreadObjectFamily::AssignIndex() {
    const CCriticalSectionLock guard(Lock);
    if (Index < 0) {
        const CCriticalSectionLock registryGuard(RegistryLock);
        Index = ThreadObjectRegistry.TakeIndex();
    }
}

void CThreadObjectFamily::ClearDeadRecords() {
    const CCriticalSectionLock guard(Lock);
    for (std::int32_t i = Records.Size() - 1; i >= 0; --i) {
        if (!Records[i]->thread) {
            continue;
        }
        std::uint32_t code = Platform::StillActive;
        TSX_ASSERT_CALL(Platform::GetExitCodeThread(Records[i]->thread, code), ModuleName);
        if (code != Platform::StillActive) {
            Records.DeleteAt(i);
        }
    }
}

CThreadRecord* CThreadObjectFamily::MakeRecord() {
    if (Index < 0) {
        AssignIndex();
    }
    CThreadRecord*& place = ThreadObjectRegistry.Place(Index);
    if (place) {
        return nullptr; // being made further up
    }
    place = &BeingMade;
    CThreadRecord* made = nullptr;
    // By its index, for another family's record may have moved the array meanwhile.
    const CScopeExit settle([&] { ThreadObjectRegistry.Place(Index) = made; });
    ClearDeadRecords();
    std::unique_ptr<CThreadRecord, CDestroyer<CThreadRecord>> record(
        new (AllocateFromProcessHeap(sizeof(CThreadRecord))) CThreadRecord{});
    TSX_ASSERT_CALL(Platform::DuplicateHandle(Platform::GetCurrentThread(), record->thread), ModuleName);
    const CCriticalSectionLock guard(Lock);
    Records.Append(record.get());
    return made = record.release();
}

namespace {

// Ends the process, whatever becomes of the notice: its handler may fail in turn, and come here again.
[[noreturn]] void EndProcess() noexcept {
    static std::atomic<bool> ending{false};
    if (ending.exchange(true)) {
        EndWithLastResort(DoubleErrorText);
    }
    try {
        DisplayMessage(DoubleErrorText, FatalMessageStyle);
    } catch (...) {
        ShowLastResort(DoubleErrorText); // the process ends before anybody could ask what was raised
    }
    Platform::Abort();
}

} // namespace

CReentryScope::CReentryScope(std::int32_t kind, TRecordUse use)
    : state(use == RU_Make ? ErrorGuardState.Get() : ErrorGuardState.Find()), kept() {
    if (!state) {
        return;
    }
    kept = *state;
    if (state->InInternalError && kind == RS_InternalError) {
        EndProcess();
    }
    state->InInternalError = state->InInternalError || kind == RS_InternalError;
    state->Raising = state->Raising || kind == RS_Raising;
}

CReentryScope::~CReentryScope() {
    if (state) {
        *state = kept;
    }
}

} // namespace Tsx
