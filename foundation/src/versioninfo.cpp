#include "foundation/inc/versioninfo.h"

#include "foundation/inc/assertion.h"
#include <cstring>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\versioninfo";

} // namespace

void CVersionInfo::Load(const CUnicodeString& path) {
    const std::uint32_t size = Platform::GetFileVersionInfoSize(path.Text());
    if (size == 0) {
        return;
    }
    Loaded = 1;
    Data.SetSize(static_cast<std::int32_t>(size));
    const bool isRead = Platform::GetFileVersionInfo(path.Text(), size, Data.Data());
    if (!isRead) {
        Data.RemoveAll(); // every question finds nothing
    }
    TSX_ASSERT_AT(isRead, ModuleName, 80);
}

CUnicodeString CVersionInfo::GetString(const char16_t* name) const {
    const void* value = nullptr;
    std::uint32_t length = 0;
    if (!Loaded || !Query(u"\\VarFileInfo\\Translation", value, length) || length < 2 * sizeof(std::uint16_t)) {
        return {};
    }
    // Only the first translation counts, whatever it lacks.
    std::uint16_t translation[2] = {};
    std::memcpy(translation, value, sizeof(translation));
    const std::uint32_t key = std::uint32_t{translation[0]} << 16 | translation[1];
    const CUnicodeString table = CUnicodeString::Format(u"\\StringFileInfo\\%08lx\\", key);
    TSX_REQUIRE_AT(table.Length() >= 1, ModuleName, 105, {});
    if (!Query((table + name).Text(), value, length) || length == 0) {
        return {};
    }
    // The stored length counts the terminator, and in some records bytes, so that it may go beyond the record's end.
    const auto* text = static_cast<const char16_t*>(value);
    const auto* end = static_cast<const void*>(Data.end());
    const std::ptrdiff_t room = static_cast<const char16_t*>(end) - text;
    return CUnicodeString::FromBuffer(text, static_cast<std::int32_t>(std::min<std::int64_t>(length, room)));
}

bool CVersionInfo::GetFixedInfo(Platform::FixedFileInfo& info) const {
    const void* value = nullptr;
    std::uint32_t length = 0;
    if (!Query(u"\\", value, length) || !value || length == 0) {
        return false;
    }
    std::memcpy(&info, value, std::min<std::size_t>(length, sizeof(info)));
    return true;
}

bool CVersionInfo::Query(const char16_t* subBlock, const void*& value, std::uint32_t& length) const {
    const void* block = Data.IsEmpty() ? nullptr : Data.Data();
    return Platform::VerQueryValue(block, static_cast<std::uint32_t>(Data.Size()), subBlock, value, length);
}

} // namespace Tsx
