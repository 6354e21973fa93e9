#include "platform/inc/errorinfo.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"
#include <oleauto.h>

namespace Platform {

namespace {

constexpr const char16_t* Library = u"oleaut32.dll";

} // namespace

std::int32_t GetErrorInfo(std::uint32_t reserved, IErrorInfo*& info) {
    info = nullptr;
    auto* get = SystemProcedure<decltype(::GetErrorInfo)>(Library, "GetErrorInfo");
    return get ? get(reserved, reinterpret_cast<::IErrorInfo**>(&info)) : E_NOTIMPL;
}

std::int32_t SetErrorInfo(std::uint32_t reserved, IErrorInfo* info) {
    auto* set = SystemProcedure<decltype(::SetErrorInfo)>(Library, "SetErrorInfo");
    return set ? set(reserved, reinterpret_cast<::IErrorInfo*>(info)) : E_NOTIMPL;
}

char16_t* SysAllocString(const char16_t* text) {
    auto* allocate = SystemProcedure<decltype(::SysAllocString)>(Library, "SysAllocString");
    return allocate ? reinterpret_cast<char16_t*>(allocate(Wide(text))) : nullptr;
}

void SysFreeString(char16_t* text) {
    if (auto* release = SystemProcedure<decltype(::SysFreeString)>(Library, "SysFreeString")) {
        release(Wide(text));
    }
}

} // namespace Platform
