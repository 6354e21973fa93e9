// A folder of a test's own as the platform functions see it, and what else the conformance tables share.
#pragma once

#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/claims.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <string>

/// A path that goes where a platform function wants a terminated one.
struct CPath : std::u16string {
    using std::u16string::u16string;
    explicit CPath(std::u16string text) : std::u16string(std::move(text)) {}
    operator const char16_t*() const { return c_str(); }
};

/// What an operation that tells success leaves as its error: 0 for success.
template <class TOperation>
std::uint32_t ErrorOf(TOperation operation) {
    Platform::SetLastError(4711);
    return operation() ? 0 : Platform::GetLastError();
}

class CScratch : public CTestFolder {
public:
    CPath operator()(std::u16string_view name) const {
        return CPath(std::u16string(Path().View()) + u'\\' + std::u16string(name));
    }
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
    void Make(const char16_t* name, std::string_view content = "x") const { Write(name, content); }
    bool Has(std::u16string_view name) const {
        return Platform::GetFileAttributes((*this)(name)) != Platform::InvalidFileAttributes;
    }
    std::int64_t SizeOf(std::u16string_view name) const {
        Platform::FileAttributeData data;
        return Platform::GetFileAttributesEx((*this)(name), data) ? data.size : -1;
    }
};

/// Does what a text says: commands, each a verb and names in the folder, with "; " between them, up to the first that
/// fails. False then, with the last error.
inline bool Do(const CScratch& scratch, std::u16string_view commands) {
    using namespace Platform;
    const auto word = [](std::u16string_view& text, std::u16string_view end) {
        const std::u16string_view found = text.substr(0, text.find(end));
        text.remove_prefix(std::min(found.size() + end.size(), text.size()));
        return found;
    };
    while (!commands.empty()) {
        std::u16string_view rest = word(commands, u"; ");
        const std::u16string_view verb = word(rest, u" ");
        const std::u16string_view name = word(rest, u" ");
        const CPath one = scratch(name);
        const CPath two = scratch(rest);
        const bool done = verb == u"delete"    ? DeleteFile(one)
                          : verb == u"mkdir"   ? CreateDirectory(one, nullptr)
                          : verb == u"rmdir"   ? RemoveDirectory(one)
                          : verb == u"copy"    ? CopyFile(one, two, true)
                          : verb == u"over"    ? CopyFile(one, two, false)
                          : verb == u"move"    ? MoveFile(one, two)
                          : verb == u"replace" ? MoveFileEx(one, two, MoveFileReplaceExisting)
                          : verb == u"through" ? MoveFileEx(one, two, MoveFileReplaceExisting | MoveFileWriteThrough)
                          : verb == u"hide"    ? SetFileAttributes(one, FileAttributeHidden)
                          : verb == u"protect" ? SetFileAttributes(one, FileAttributeReadOnly)
                          : verb == u"make"    ? scratch.CanOpen(name, GenericWrite, 0, CreateNew)
                          : verb == u"open"    ? scratch.CanOpen(name, GenericRead)
                          : verb == u"has"     ? scratch.Has(name)
                          : verb == u"gone"    ? !scratch.Has(name)
                          : verb == u"bytes"   ? std::to_string(scratch.SizeOf(name)) == Readable(rest)
                                               : (ADD_FAILURE() << Readable(verb), false);
        if (!done) {
            return false;
        }
    }
    return true;
}

/// The names that a search tells, in its order, or its error.
inline std::string Found(const CPath& pattern) {
    Platform::FindData data;
    const Platform::Handle search = Platform::FindFirstFile(pattern, data);
    if (search == Platform::InvalidHandle()) {
        return std::to_string(Platform::GetLastError());
    }
    std::string names = Readable(data.name);
    while (Platform::FindNextFile(search, data)) {
        names += " " + Readable(data.name);
    }
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorNoMoreFiles) << Readable(pattern);
    EXPECT_TRUE(Platform::FindClose(search));
    return names;
}

/// Checks rows that are written "question -> answer": what `ask` makes of the question is the answer.
template <class TAsk>
void ExpectRows(TAsk ask, std::initializer_list<std::u16string> rows, Wine wine = Wine::AsWindows) {
    for (const std::u16string& row : rows) {
        const std::u16string question = row.substr(0, row.find(u" -> "));
        const std::string name = Readable(question);
        Claim(wine, name, [&] { EXPECT_EQ(name + " -> " + ask(question), Readable(row)); });
    }
}
