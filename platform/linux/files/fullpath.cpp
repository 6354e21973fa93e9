#include "platform/linux/files/fullpath.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace Platform {

namespace {

// The component up to the next separator, which is removed with it.
std::u16string_view TakeComponent(std::u16string_view& path) {
    const auto* const end = std::find_if(path.begin(), path.end(), IsSeparator);
    const std::u16string_view component = path.substr(0, static_cast<std::size_t>(end - path.begin()));
    path.remove_prefix(std::min(component.size() + 1, path.size()));
    return component;
}

// Adds what a path holds behind its root.
void AddComponents(std::u16string_view path, FullPath& full) {
    if (path.empty()) {
        return;
    }
    full.closed = IsSeparator(path.back());
    while (!path.empty()) {
        const std::u16string_view component = TakeComponent(path);
        if (component.empty() || component == u".") {
            continue;
        }
        if (component == u"..") {
            if (!full.parts.empty()) {
                full.parts.pop_back();
            }
            continue;
        }
        full.parts.emplace_back(component);
    }
}

void TakeShare(std::u16string_view& path, FullPath& full) {
    full.kind = PathKind::Share;
    full.root = u"\\";
    for (int i = 0; i < 2 && !path.empty(); ++i) {
        full.closed = IsSeparator(path.back());
        full.root += u'\\';
        full.root += TakeComponent(path);
    }
}

bool StartFromCurrentFolder(FullPath& full) {
    const std::unique_ptr<char, void (*)(void*)> native(getcwd(nullptr, 0), &std::free);
    if (!native) {
        return FailFromErrno();
    }
    const std::u16string folder = WindowsPath(native.get());
    full.root = folder.substr(0, 2);
    full.parts = SplitAsItStands(std::u16string_view(folder).substr(2));
    return true;
}

// Removes the root of a path, whatever its form, and tells the parts that stand for it.
bool TakeRoot(std::u16string_view& path, FullPath& full) {
    const bool rooted = IsSeparator(path[0]);
    if (rooted && path.size() > 1 && IsSeparator(path[1])) {
        path.remove_prefix(2);
        const bool device = path.size() > 1 && (path[0] == u'?' || path[0] == u'.') && IsSeparator(path[1]);
        if (!device) {
            TakeShare(path, full);
            return true;
        }
        full.kind = PathKind::Device;
        full.root = std::u16string(u"\\\\") + path[0];
        path.remove_prefix(2);
        return true;
    }
    const bool drive = path.size() > 1 && path[1] == u':' && !rooted;
    if (drive) {
        full.root = path.substr(0, 2);
        path.remove_prefix(2);
    } else {
        full.root = u"Z:";
    }
    const bool absolute = !path.empty() && IsSeparator(path[0]);
    if (absolute || UpcaseCharacter(full.root[0]) != u'Z') {
        return true; // a drive other than the current one has no current folder but its root
    }
    return StartFromCurrentFolder(full);
}

} // namespace

bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

std::u16string_view WithoutClosingDots(std::u16string_view component, bool last) {
    if (last) {
        return component.substr(0, component.find_last_not_of(u" .") + 1);
    }
    const bool oneDot = component.ends_with(u'.') && !component.ends_with(u"..");
    return component.substr(0, component.size() - (oneDot ? 1 : 0));
}

std::u16string FullPath::Text() const {
    std::u16string text = root;
    for (const std::u16string& part : parts) {
        text += u'\\';
        text += part;
    }
    if (closed || (parts.empty() && kind != PathKind::Share)) {
        text += u'\\';
    }
    return text;
}

bool ParseFullPath(std::u16string_view path, FullPath& full) {
    if (path.find_first_not_of(u' ') == std::u16string_view::npos) {
        return Fail(ErrorInvalidName);
    }
    full = FullPath();
    if (!TakeRoot(path, full)) {
        return false;
    }
    AddComponents(path, full);
    return true;
}

std::vector<std::u16string> SplitAsItStands(std::u16string_view path) {
    std::vector<std::u16string> parts;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        if (end > 0) {
            parts.emplace_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

std::uint32_t CopyPath(std::u16string_view path, std::uint32_t size, char16_t* buffer) {
    const auto length = static_cast<std::uint32_t>(path.size());
    if (size <= length) {
        return length + 1;
    }
    *std::copy(path.begin(), path.end(), buffer) = u'\0';
    return length;
}

std::u16string WindowsPath(std::string_view native) {
    std::u16string path = u"Z:" + WideName(native);
    std::replace(path.begin(), path.end(), u'\\', EscapedBackslash);
    std::replace(path.begin(), path.end(), u'/', u'\\');
    return path;
}

std::string EntryName(std::u16string_view component) {
    std::u16string name(component);
    std::replace(name.begin(), name.end(), EscapedBackslash, u'\\');
    return NativeName(name);
}

} // namespace Platform
