#include "platform/inc/errorinfo.h"

#include "platform/inc/memory.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/modules/loadedmodules.h"
#include <cstring>
#include <memory>
#include <string_view>

namespace Platform {

namespace {

constexpr std::int32_t EUnexpected = static_cast<std::int32_t>(0x8000FFFF); // E_UNEXPECTED

struct ReferenceEnd {
    void operator()(IErrorInfo* info) const { info->Release(); }
};

/// Holds one reference, to the end of the thread at most.
thread_local std::unique_ptr<IErrorInfo, ReferenceEnd> threadErrorInfo;

// There is no COM library that all modules share. One that has failures of its own exports the function itself.
std::int32_t GetErrorInfoOfLibrary(IErrorInfo*& info) {
    const auto ask = reinterpret_cast<std::int32_t (*)(std::uint32_t, IErrorInfo**)>(FindExport("GetErrorInfo"));
    return ask ? ask(0, &info) : SFalse;
}

} // namespace

std::int32_t GetErrorInfo(std::uint32_t, IErrorInfo*& info) {
    info = nullptr;
    PLATFORM_FAULT(GetErrorInfo, EUnexpected);
    info = threadErrorInfo.release();
    return info ? SOk : GetErrorInfoOfLibrary(info);
}

std::int32_t SetErrorInfo(std::uint32_t, IErrorInfo* info) {
    if (info) {
        info->AddRef();
    }
    threadErrorInfo.reset(info);
    return SOk;
}

char16_t* SysAllocString(const char16_t* text) {
    const std::size_t bytes = (std::u16string_view(text).size() + 1) * sizeof(char16_t);
    auto* copy = static_cast<char16_t*>(AllocateRuntimeHeap(bytes));
    return copy ? static_cast<char16_t*>(std::memcpy(copy, text, bytes)) : nullptr;
}

void SysFreeString(char16_t* text) {
    FreeRuntimeHeap(text);
}

} // namespace Platform
