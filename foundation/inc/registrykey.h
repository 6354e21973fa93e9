// A key of the registry that knows its own name, which failures tell. For the settings and the event log's source.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/registry.h"

namespace Tsx {

constexpr std::int32_t RK_Read = 0;
constexpr std::int32_t RK_Write = 1;
constexpr std::int32_t RK_Closed = 2;

/// Reads never raise on account of the registry: what is missing or of another type gives the default or 0. Using a
/// closed key, a null name or a negative size is an internal error, and where none can be thrown the answer is the
/// same default. An object belongs to one thread at a time.
class CRegistryKey {
public:
    CRegistryKey() = default;
    /// Calls Close.
    ~CRegistryKey();
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;

    /// Opens the key at `subkey`, which may be empty, for reading (RK_Read) or, made if it is not there, for writing
    /// (RK_Write). The last error is the registry's result. After a failure the object still names the key, answers
    /// every read with the default and has to be closed before it opens another one.
    bool Open(Platform::RegistryKey root, const char16_t* subkey, std::int32_t mode);
    /// Sets the last error if there was a key to close.
    void Close();

    std::uint32_t GetValueType(const char16_t* name) const;
    /// In bytes.
    std::int32_t GetValueSize(const char16_t* name) const;
    /// The bytes read; 0 also when the buffer is too small. With a null buffer and size 0 it is what there is to read.
    std::int32_t GetBinaryValue(const char16_t* name, void* buffer, std::int32_t size) const;
    /// A REG_SZ or a REG_EXPAND_SZ as it stands, without its terminator. References to the environment stay unexpanded.
    ///
    ///   "ab\0" ab    "ab" ab    "ab\0\0" ab and a NUL    "\0" empty    no bytes or an odd number of them: the default
    CUnicodeString GetStringValue(const char16_t* name, const char16_t* defaultText) const;
    /// Writes a REG_SZ of `size` bytes, which count the terminator. Raises ERR_CANT_WRITE_TO_REGISTRY with the path of
    /// the key, or with that of the value when the registry refuses it.
    void SetStringValue(const char16_t* name, const char16_t* text, std::int32_t size);

    // Callers only read these.
    Platform::RegistryKey Handle = nullptr; // null when closed, or when an open failed
    std::int32_t Mode = RK_Closed;
    std::int32_t Reserved = 0;
    CUnicodeString Path; // root name, backslash, subkey; empty when closed

    /// The access bit for a view of the registry: 0 and 2 the 64-bit one, 1 the 32-bit one.
    static std::uint32_t GetViewAccess(std::int32_t selector);
};

} // namespace Tsx
