// The search for names: FindFirstFile and what follows it. A search tells the entries that were there when it began,
// "." and ".." first and the others in the order of their names without regard to case.
#include "platform/inc/directories.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/fileinfo.h"
#include "platform/linux/handles.h"
#include "platform/linux/lettercase.h"
#include "platform/linux/nativetext.h"
#include "platform/linux/paths.h"
#include "platform/linux/wildcards.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <new>

namespace Platform {

namespace {

// A name that no path could say is nobody's: one with a separator of Windows in it, or without room for it.
bool CanBeTold(std::u16string_view name) {
    return name.size() < std::size(FindData().name) && name.find(u'\\') == std::u16string_view::npos;
}

bool TellNext(SearchObject& search, FindData& data) {
    while (search.next < search.names.size()) {
        const std::string& name = search.names[search.next++];
        FindData found;
        if (!ReadEntryInfo(search.folder.Get(), name, found)) {
            continue; // it went since the search began
        }
        const std::u16string wide = WideName(name);
        *std::copy(wide.begin(), wide.end(), std::begin(found.name)) = u'\0';
        data = found;
        return true;
    }
    return false;
}

bool IsDots(const std::string& name) {
    return name == "." || name == "..";
}

bool ListMatches(SearchObject& search, std::u16string_view expression, bool isRoot) {
    const Listing listing = OpenListing(search.folder.Get());
    if (!listing) {
        return FailFromErrno();
    }
    std::vector<std::pair<std::u16string, std::string>> found;
    while (const dirent* entry = readdir(listing.get())) {
        std::u16string name = WideName(entry->d_name);
        if (CanBeTold(name) && !(isRoot && IsDots(entry->d_name)) && MatchesExpression(name, expression)) {
            std::transform(name.begin(), name.end(), name.begin(), &UpcaseCharacter);
            found.emplace_back(IsDots(entry->d_name) ? std::u16string(name.size(), u'\0') : std::move(name),
                               entry->d_name);
        }
    }
    std::sort(found.begin(), found.end());
    for (auto& [order, name] : found) {
        search.names.push_back(std::move(name));
    }
    return true;
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
        search.names.push_back(location.name);
        search.folder = std::move(location.folder);
        return !location.isRoot || Fail(ErrorFileNotFound);
    }
    if (!Locate(nameStart == 0 ? u"." : path.substr(0, nameStart), location)) {
        return false;
    }
    if (!location.exists) {
        return Fail(ErrorPathNotFound);
    }
    search.folder = Descriptor(openat(location.folder.Get(), location.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!search.folder) {
        return errno == ENOTDIR ? Fail(ErrorDirectory) : FailFromErrno();
    }
    const bool endsInDot = pattern.ends_with(u'.');
    pattern = pattern.substr(0, pattern.find_last_not_of(u" .") + 1);
    return ListMatches(search, SearchExpression(pattern, endsInDot), location.isRoot);
}

} // namespace

Handle FindFirstFile(const char16_t* path, FindData& data) {
    PLATFORM_FAULT(FindFirstFile, InvalidHandle());
    std::unique_ptr<SearchObject> search(new (std::nothrow) SearchObject);
    if (!search) {
        SetLastError(ErrorNotEnoughMemory);
        return InvalidHandle();
    }
    if (!StartSearch(path, *search)) {
        return InvalidHandle();
    }
    if (!TellNext(*search, data)) {
        SetLastError(ErrorFileNotFound);
        return InvalidHandle();
    }
    return static_cast<HandleObject*>(search.release());
}

bool FindNextFile(Handle search, FindData& data) {
    PLATFORM_FAULT(FindNextFile, false);
    SearchObject* object = SearchOf(search);
    return object && (TellNext(*object, data) || Fail(ErrorNoMoreFiles));
}

bool FindClose(Handle search) {
    const std::unique_ptr<SearchObject> object(SearchOf(search));
    PLATFORM_FAULT(FindClose, false);
    return object != nullptr;
}

} // namespace Platform
