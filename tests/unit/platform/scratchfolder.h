// A folder of a test's own, removed with all that is in it, and what else the conformance tables share.
#pragma once

#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include "tests/support/claims.h"
#include "tests/support/text.h"
#include <filesystem>
#include <string>

/// A path that goes where a platform function wants a terminated one.
struct CPath : std::u16string {
    using std::u16string::u16string;
    explicit CPath(std::u16string text) : std::u16string(std::move(text)) {}
    operator const char16_t*() const { return c_str(); }
};

class CScratch {
public:
    CScratch() {
        const std::u16string start = std::filesystem::temp_directory_path().u16string();
        for (int number = 0; number < 10000; ++number) {
            folder = start + u"\\scratch" + CPath(std::filesystem::path(std::to_string(number)).u16string());
            if (Platform::CreateDirectory(folder.c_str(), nullptr)) {
                return;
            }
        }
        ADD_FAILURE() << "no folder to work in: " << Platform::GetLastError();
    }
    ~CScratch() { Remove(folder); }
    CScratch(const CScratch&) = delete;
    CScratch& operator=(const CScratch&) = delete;

    CPath operator()(std::u16string_view name) const { return CPath(folder + u'\\' + std::u16string(name)); }

    Platform::Handle Open(std::u16string_view name, std::uint32_t access, std::uint32_t share,
                          std::uint32_t disposition = Platform::OpenExisting,
                          std::uint32_t attributes = Platform::FileAttributeNormal) const {
        return Platform::CreateFile((*this)(name), access, share, nullptr, disposition, attributes, nullptr);
    }

    /// Opens and closes again, keeping the last error.
    bool CanOpen(std::u16string_view name, std::uint32_t access, std::uint32_t share = 0,
                 std::uint32_t disposition = Platform::OpenExisting,
                 std::uint32_t attributes = Platform::FileAttributeNormal) const {
        const Platform::Handle file = Open(name, access, share, disposition, attributes);
        const std::uint32_t error = Platform::GetLastError();
        const bool opened = file != Platform::InvalidHandle() && Platform::CloseHandle(file);
        Platform::SetLastError(error);
        return opened;
    }

    /// Makes a file with that content.
    void Make(std::u16string_view name, std::string_view content = "x") const {
        const Platform::Handle file = Open(name, Platform::GenericWrite, 0, Platform::CreateNew);
        ASSERT_NE(file, Platform::InvalidHandle()) << Readable(name) << " " << Platform::GetLastError();
        std::uint32_t written = 0;
        EXPECT_TRUE(Platform::WriteFile(file, content.data(), static_cast<std::uint32_t>(content.size()), written));
        EXPECT_TRUE(Platform::CloseHandle(file));
    }
    void MakeFolder(std::u16string_view name) const {
        EXPECT_TRUE(Platform::CreateDirectory((*this)(name), nullptr)) << Readable(name);
    }
    bool Has(std::u16string_view name) const {
        return Platform::GetFileAttributes((*this)(name)) != Platform::InvalidFileAttributes;
    }
    std::int64_t SizeOf(std::u16string_view name) const {
        Platform::FileAttributeData data;
        return Platform::GetFileAttributesEx((*this)(name), data) ? data.size : -1;
    }

private:
    static void Remove(const std::u16string& path) {
        Platform::FindData data;
        const Platform::Handle search = Platform::FindFirstFile((path + u"\\*").c_str(), data);
        for (bool more = search != Platform::InvalidHandle(); more; more = Platform::FindNextFile(search, data)) {
            const std::u16string name = data.name;
            const std::u16string entry = u"\\\\?\\" + Whole(path) + u"\\" + name;
            if (name == u"." || name == u"..") {
                continue;
            }
            Platform::SetFileAttributes(entry.c_str(), Platform::FileAttributeNormal);
            if ((data.attributes & Platform::FileAttributeDirectory) != 0 &&
                (data.attributes & Platform::FileAttributeReparsePoint) == 0) {
                Remove(entry);
            } else if (!Platform::DeleteFile(entry.c_str())) {
                Platform::RemoveDirectory(entry.c_str());
            }
        }
        Platform::FindClose(search);
        Platform::RemoveDirectory(path.c_str());
    }
    static std::u16string Whole(const std::u16string& path) {
        char16_t buffer[1000] = {};
        Platform::GetFullPathName(path.c_str(), 1000, buffer, nullptr);
        const std::u16string whole = buffer;
        return whole.starts_with(u"\\\\?\\") ? whole.substr(4) : whole;
    }

    std::u16string folder;
};

/// What an operation that tells success leaves as its error: 0 for success.
template <class TOperation>
std::uint32_t ErrorOf(TOperation operation) {
    Platform::SetLastError(4711);
    return operation() ? 0 : Platform::GetLastError();
}
