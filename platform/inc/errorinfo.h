// What a COM component tells of its failures: the published error-info object, one for each thread, and its strings.
#pragma once

#include <cstdint>

namespace Platform {

struct Guid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];
};

constexpr std::int32_t SOk = 0;    // S_OK
constexpr std::int32_t SFalse = 1; // S_FALSE

/// The root of every COM interface. Results are HRESULT values; a reference is given back by Release.
class IUnknown {
public:
    IUnknown(const IUnknown&) = delete;
    IUnknown& operator=(const IUnknown&) = delete;

    virtual std::int32_t QueryInterface(const Guid& interfaceId, void** object) = 0;
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;

protected:
    IUnknown() = default;
    ~IUnknown() = default;
};

/// The published interface, slot for slot. Strings are the caller's, who frees them with SysFreeString.
class IErrorInfo : public IUnknown {
public:
    virtual std::int32_t GetGUID(Guid* interfaceId) = 0;
    virtual std::int32_t GetSource(char16_t** text) = 0;
    virtual std::int32_t GetDescription(char16_t** text) = 0;
    virtual std::int32_t GetHelpFile(char16_t** text) = 0;
    virtual std::int32_t GetHelpContext(std::uint32_t* context) = 0;

protected:
    ~IErrorInfo() = default;
};

/// Takes the calling thread's error info, whose reference becomes the caller's. SFalse with a null `info` if there is
/// none.
std::int32_t GetErrorInfo(std::uint32_t reserved, IErrorInfo*& info);
/// Leaves an error info for the calling thread, in place of the one before; null takes that away.
std::int32_t SetErrorInfo(std::uint32_t reserved, IErrorInfo* info);

/// A string as COM passes it on; null when memory is exhausted. SysFreeString takes null.
char16_t* SysAllocString(const char16_t* text);
void SysFreeString(char16_t* text);

} // namespace Platform
