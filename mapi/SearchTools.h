// Registry keys, values and texts of fixed size for the steps of the search in ProviderSearch.h, which allocates
// nothing and raises nothing.
#pragma once

#include "foundation/inc/format.h"
#include "platform/inc/environment.h"
#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Mapi {

/// A text of at most `Size` - 1 characters and its terminator.
template <std::size_t Size>
class CFixedText {
public:
    const char16_t* Text() const { return text; }
    std::u16string_view View() const { return text; }

    /// Room for a function of the system, which writes at most `Size` characters.
    char16_t* Buffer() { return text; }

    /// Appends; false, and the text as it was, if it does not fit.
    bool Append(std::u16string_view more) {
        const std::size_t length = View().size();
        if (length + more.size() >= Size) {
            return false;
        }
        *std::copy(more.begin(), more.end(), text + length) = u'\0';
        return true;
    }
    bool Assign(std::u16string_view other) {
        Cut(0);
        return Append(other);
    }
    void Cut(std::size_t length) { text[length] = u'\0'; }

    /// Text in the language of wide print; false, and empty, if it does not fit.
    template <class... TArguments>
    bool Format(const char16_t* format, TArguments... arguments) {
        const Tsx::CFormatArgument list[] = {Tsx::CFormatArgument(arguments)...};
        const std::int32_t length =
            Tsx::FormatText(text, static_cast<std::int32_t>(Size) - 1, format, list, sizeof...(arguments));
        Cut(static_cast<std::size_t>(std::max(length, 0)));
        return length >= 0;
    }

private:
    char16_t text[Size + 1] = {}; // one more: a text that the system did not terminate is terminated too
};

using CPathText = CFixedText<Platform::MaxPath>;

/// Expands references to the environment; false if that fails or does not fit.
inline bool ExpandInto(CPathText& target, const char16_t* text) {
    const std::uint32_t needed = Platform::ExpandEnvironmentStrings(text, target.Buffer(), Platform::MaxPath);
    if (needed == 0 || needed > Platform::MaxPath) {
        target.Cut(0);
        return false;
    }
    return true;
}

/// A key of the registry over a scope. One that could not be opened answers no read and has no subkeys.
class CSearchKey {
public:
    CSearchKey(Platform::RegistryKey parent, const char16_t* path, std::uint32_t access = Platform::KeyRead)
        : result(Platform::RegOpenKeyEx(parent, path, 0, access, handle)) {}
    CSearchKey(std::uint32_t root, const char16_t* path, std::uint32_t access = Platform::KeyRead)
        : CSearchKey(Platform::RootKey(root), path, access) {}
    ~CSearchKey() {
        if (handle) {
            const std::uint32_t error = Platform::GetLastError();
            Platform::RegCloseKey(handle);
            Platform::SetLastError(error);
        }
    }
    CSearchKey(const CSearchKey&) = delete;
    CSearchKey& operator=(const CSearchKey&) = delete;

    explicit operator bool() const { return handle != nullptr; }
    Platform::RegistryKey Handle() const { return handle; }
    /// Of the opening, a Windows code.
    std::uint32_t Result() const { return result; }

private:
    Platform::RegistryKey handle = nullptr;
    std::uint32_t result;
};

/// A value of at most `Bytes` bytes, read as text whatever its type is, and followed by two terminators. After a failed
/// read the type is 0 and the text empty.
template <std::size_t Bytes>
struct CSearchValue {
    CSearchValue(const CSearchKey& key, const char16_t* name) {
        std::uint32_t size = Bytes;
        result = Platform::RegQueryValueEx(key.Handle(), name, &type, text, &size);
        if (result != Platform::ErrorSuccess) {
            type = 0;
            std::fill(std::begin(text), std::end(text), u'\0');
        }
    }

    std::uint32_t result; // a Windows code
    std::uint32_t type = 0;
    char16_t text[Bytes / sizeof(char16_t) + 2] = {};
};

/// The size of most values of the search, which are paths and names.
using CSearchText = CSearchValue<520>;

} // namespace Mapi
