// The search for names: FindFirstFile and what follows it. A search tells "." and ".." first and then the other entries
// in the order of their names without regard to case. It reads the folder, as it is then, for the first of those: most
// searches for "*" only ask whether there is a folder.
#include "platform/inc/directories.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fileinfo.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/handles.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/wildcards.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/nativetext.h"
#include "platform/linux/text/utf8.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <utility>

namespace Platform {

namespace {

// Whether a path can say the name of an entry: not one with a separator of Windows in it, one that begins like a drive,
// and one without room for it.
bool IsRepresentable(std::u16string_view name) {
    const bool drive = name.size() > 1 && name[1] == u':';
    return !drive && name.size() < std::size(FindData().name) && name.find(u'\\') == std::u16string_view::npos;
}

bool IsDots(std::string_view name) {
    return name == "." || name == "..";
}

// A name behind the key that it is sorted by, and the 0 that ends that. The key has the upper-case units in the form of
// UTF-8, each by itself, so that keys compare as the units do; whole texts are moved and compared faster than pairs.
std::string SortableName(std::u16string_view name, std::string_view entry) {
    std::string text(name.size() * 3, '\0');
    UnitWriter<char> key(text.data(), text.size());
    for (const char16_t unit : name) {
        PutUtf8(key, UpcaseCharacter(unit));
    }
    text.resize(key.Size());
    text += '\0';
    text += entry;
    return text;
}

// Adds what matches to the names. False with the last error set.
bool ListMatches(SearchObject& search, std::u16string_view expression) {
    Listing listing(search.folder.Get());
    std::vector<std::string> found;
    while (const char* entry = listing.Next()) {
        const std::u16string name = WideName(entry);
        if (!IsDots(entry) && IsRepresentable(name) && MatchesExpression(name, expression)) {
            found.push_back(SortableName(name, entry));
        }
    }
    if (listing.Error() != 0) {
        return Fail(listing.Error());
    }
    std::sort(found.begin(), found.end());
    for (std::string& name : found) {
        name.erase(0, name.find('\0') + 1);
        search.names.push_back(std::move(name));
    }
    return true;
}

// ERROR_NO_MORE_FILES at the end.
bool NextEntry(SearchObject& search, FindData& data) {
    for (;;) {
        if (search.next == search.names.size() && !search.unread.empty() &&
            !ListMatches(search, std::exchange(search.unread, {}))) {
            return false;
        }
        if (search.next == search.names.size()) {
            return Fail(ErrorNoMoreFiles);
        }
        const std::string& name = search.names[search.next++];
        FileAttributeData info;
        if (ReadEntryInfo(search.folder.Get(), name, info)) { // else it went meanwhile
            const std::u16string wide = WideName(name);
            static_cast<FileAttributeData&>(data) = info;
            *std::copy(wide.begin(), wide.end(), std::begin(data.name)) = u'\0';
            return true;
        }
    }
}

// The folder to search and, for a pattern, what in it; for a plain name the name as it is spelled there.
bool StartSearch(std::u16string_view path, SearchObject& search) {
    const std::size_t driveEnd = path.size() > 1 && path[1] == u':' ? 2 : 0;
    const std::size_t nameStart = std::max(path.find_last_of(u"\\/") + 1, driveEnd); // npos + 1 is 0
    std::u16string_view pattern = path.substr(nameStart);
    if (pattern.empty()) {
        return Fail(ErrorFileNotFound); // a root or a closing separator names no entry
    }
    Location location;
    if (!HasWildcards(pattern)) {
        if (!LocateExisting(path, location)) {
            return false;
        }
        if (location.isRoot) {
            return Fail(ErrorFileNotFound);
        }
        search.names.push_back(location.name);
        search.folder = std::move(location.folder);
        return true;
    }
    if (!Locate(nameStart == 0 ? u"." : path.substr(0, nameStart), location)) {
        return false;
    }
    if (!location.exists) {
        return Fail(ErrorPathNotFound);
    }
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC; // one that may not be read cannot be searched
    search.folder = Descriptor(openat(location.folder.Get(), location.name.c_str(), flags));
    if (!search.folder) {
        return Fail(errno == ENOTDIR ? ErrorDirectory : WindowsErrorCode(errno));
    }
    const bool endsInDot = pattern.ends_with(u'.');
    pattern = WithoutClosingDots(pattern, true);
    search.unread = SearchExpression(pattern, endsInDot);
    for (const char* dots : {".", ".."}) {
        if (!location.isRoot && MatchesExpression(WideName(dots), search.unread)) {
            search.names.emplace_back(dots);
        }
    }
    return true;
}

} // namespace

Handle FindFirstFile(const char16_t* path, FindData& data) {
    PLATFORM_FAULT(FindFirstFile, InvalidHandle());
    std::unique_ptr<SearchObject> search(new (std::nothrow) SearchObject);
    if (!search) {
        return Fail(ErrorNotEnoughMemory, InvalidHandle());
    }
    if (!StartSearch(path, *search)) {
        return InvalidHandle();
    }
    if (!NextEntry(*search, data)) {
        if (GetLastError() == ErrorNoMoreFiles) {
            SetLastError(ErrorFileNotFound);
        }
        return InvalidHandle();
    }
    return static_cast<HandleObject*>(search.release());
}

bool FindNextFile(Handle search, FindData& data) {
    PLATFORM_FAULT(FindNextFile, false);
    SearchObject* object = SearchOf(search);
    return object && NextEntry(*object, data);
}

bool FindClose(Handle search) {
    const std::unique_ptr<SearchObject> object(SearchOf(search));
    PLATFORM_FAULT(FindClose, false);
    return object != nullptr;
}

} // namespace Platform
