#include "foundation/inc/textstream.h"

#include "foundation/inc/array.h"
#include "foundation/inc/errors.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include <limits>
#include <string_view>

namespace Tsx {

namespace {

// An open file of the platform, closed in any case.
class COpenFile {
public:
    explicit COpenFile(const CUnicodeString& path)
        : name(path), handle(Platform::CreateFile(path.Text(), Platform::GenericRead, Platform::FileShareRead, nullptr,
                                                  Platform::OpenExisting, Platform::FileAttributeNormal, nullptr)) {
        Check(handle != Platform::InvalidHandle());
    }
    ~COpenFile() { Platform::CloseHandle(handle); }
    COpenFile(const COpenFile&) = delete;
    COpenFile& operator=(const COpenFile&) = delete;

    /// All bytes, followed by two zero bytes so that any text in them is terminated.
    CArray<char> ReadAll() const {
        CArray<char> bytes;
        constexpr std::int32_t pieceSize = 0x10000;
        std::int32_t used = 0;
        std::uint32_t count = 0;
        do {
            if (used > std::numeric_limits<std::int32_t>::max() - 2 * pieceSize) {
                GenerateMemoryException();
            }
            bytes.SetSize(used + pieceSize);
            Check(Platform::ReadFile(handle, bytes.Data() + used, pieceSize, count));
            used += static_cast<std::int32_t>(count);
        } while (count > 0);
        bytes.SetSize(used);
        bytes.SetSize(used + 2);
        return bytes;
    }

private:
    CUnicodeString name;
    Platform::Handle handle;

    void Check(bool success) const {
        if (!success) {
            GenerateFileException(Platform::GetLastError(), name);
        }
    }
};

} // namespace

CUnicodeString ReadTextFile(const CUnicodeString& path) {
    const CArray<char> bytes = COpenFile(path).ReadAll();
    const std::string_view content(bytes.Data(), static_cast<std::size_t>(bytes.Size()) - 2);
    constexpr std::string_view utf16Mark = "\xFF\xFE";
    constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
    if (content.starts_with(utf16Mark)) {
        const auto count = static_cast<std::int32_t>((content.size() - utf16Mark.size()) / sizeof(char16_t));
        return {reinterpret_cast<const char16_t*>(bytes.Data()) + 1, count};
    }
    if (content.starts_with(utf8Mark)) {
        return {bytes.Data() + utf8Mark.size(), Platform::CodePageUtf8};
    }
    return {bytes.Data(), AnsiCodePage};
}

} // namespace Tsx
