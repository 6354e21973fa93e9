#include "platform/inc/errorinfo.h"

#include "platform/inc/memory.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/modules/loadedmodules.h"
#include <cstring>
#include <string_view>
#include <utility>

namespace Platform {

namespace {

constexpr std::int32_t EUnexpected = static_cast<std::int32_t>(0x8000FFFF); // E_UNEXPECTED

/// Holds one reference, to the end of the thread at most.
struct ThreadErrorInfo {
    IErrorInfo* info = nullptr;

    ThreadErrorInfo() = default;
    ThreadErrorInfo(const ThreadErrorInfo&) = delete;
    ThreadErrorInfo& operator=(const ThreadErrorInfo&) = delete;
    ~ThreadErrorInfo() {
        if (info) {
            info->Release();
        }
    }
};

thread_local ThreadErrorInfo threadErrorInfo;

// There is no COM library that all modules share. One that has failures of its own exports the function itself.
std::int32_t GetErrorInfoOfLibrary(IErrorInfo*& info) {
    const auto ask = reinterpret_cast<std::int32_t (*)(std::uint32_t, IErrorInfo**)>(FindExport("GetErrorInfo"));
    return ask ? ask(0, &info) : SFalse;
}

} // namespace

std::int32_t GetErrorInfo(std::uint32_t, IErrorInfo*& info) {
    info = nullptr;
    PLATFORM_FAULT(GetErrorInfo, EUnexpected);
    info = std::exchange(threadErrorInfo.info, nullptr);
    return info ? SOk : GetErrorInfoOfLibrary(info);
}

std::int32_t SetErrorInfo(std::uint32_t, IErrorInfo* info) {
    if (info) {
        info->AddRef();
    }
    if (IErrorInfo* before = std::exchange(threadErrorInfo.info, info)) {
        before->Release();
    }
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
