#include "mapi/ProviderSearch.h"

#include "mapi/MapiProvider.h"
#include "platform/inc/directories.h"
#include "platform/inc/modules.h"
#include "platform/inc/process.h"
#include "platform/inc/text.h"

namespace Mapi {

namespace {

constexpr const char16_t* ProviderName = u"olmapi32.dll";

bool IsFile(const char16_t* path) {
    const std::uint32_t attributes = Platform::GetFileAttributes(path);
    return attributes != Platform::InvalidFileAttributes && (attributes & Platform::FileAttributeDirectory) == 0;
}

// The folder part of the program's path, with its closing separator, in lower case.
std::u16string_view CutToFolder(char16_t* path) {
    std::u16string_view text = path;
    std::transform(text.begin(), text.end(), path, Platform::towlower);
    return text.substr(0, text.find(u"outlook.exe"));
}

Platform::Module LoadFromFolder(std::u16string_view folder) {
    CPathText path;
    const bool fits = path.Assign(folder) && path.Append(ProviderName);
    if (fits && IsFile(path.Text())) {
        return Platform::LoadLibraryEx(path.Text(), 0);
    }
    Platform::Module module = nullptr;
    if (!LoadMsMapi(module)) {
        return nullptr;
    }
    // AS DESIGNED: LoadMsMapi may have made the installer put the library here. It is then loaded too, and the one that
    // LoadMsMapi gave stays loaded.
    return fits && IsFile(path.Text()) ? Platform::LoadLibraryEx(path.Text(), 0) : module;
}

/// How the search goes on after Outlook's own entry.
enum TAfterOutlook { AO_TrySystem, AO_Stop };

TAfterOutlook LoadOutlook(Platform::Module& module) {
    const CSearchKey key(Platform::HkeyLocalMachine,
                         u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\OUTLOOK.EXE");
    if (!key) {
        return AO_TrySystem;
    }
    CSearchText program(key, nullptr);
    // AS DESIGNED: a value that cannot be read or is not of type REG_SZ ends the whole search. The result of the read
    // is not checked: after a failed one the type is 0.
    if (program.type != Platform::RegSz) {
        return AO_Stop;
    }
    CPathText folder;
    if (!folder.Assign(CutToFolder(program.text))) {
        return AO_TrySystem;
    }
    // AS DESIGNED: the former mode is not restored.
    Platform::SetErrorMode(0);
    if (!Platform::SetDllDirectory(folder.Text())) {
        return AO_Stop;
    }
    module = LoadFromFolder(folder.View());
    Platform::SetDllDirectory(nullptr);
    return module ? AO_Stop : AO_TrySystem;
}

// FGetComponentPath of the system's library: the path of a component, and whether there is one.
using GetComponentPathEntry = std::int32_t(const char* component, const char* qualifier, char* path, std::uint32_t size,
                                           std::int32_t install);

constexpr std::uint32_t NarrowSize = 260;

bool ReadNarrow(const CSearchKey& key, const char* name, char (&text)[NarrowSize + 1]) {
    std::uint32_t size = NarrowSize;
    return Platform::RegQueryValueExA(key.Handle(), name, nullptr, text, &size) == Platform::ErrorSuccess;
}

Platform::Module LoadComponentLibrary() {
    const Platform::Module module = Platform::LoadLibraryEx(u"mapi32.dll", 0);
    return module ? module : Platform::LoadLibraryEx(u"mapistub.dll", 0);
}

// Loads what one value of a client's key names.
Platform::Module LoadNamedLibrary(const CSearchKey& key, const char16_t* name) {
    const CSearchText value(key, name);
    CPathText path;
    if (value.type == Platform::RegExpandSz) {
        return ExpandInto(path, value.text) ? Platform::LoadLibraryEx(path.Text(), 0) : nullptr;
    }
    return value.type == Platform::RegSz ? Platform::LoadLibraryEx(value.text, 0) : nullptr;
}

} // namespace

Platform::Module LoadMapiProvider() {
    Platform::Module module = outlookOnly ? nullptr : LoadDefaultMailClient();
    if (module || LoadOutlook(module) == AO_Stop) {
        return module;
    }
    return outlookOnly ? nullptr : LoadSystemMapi();
}

Platform::Module LoadDefaultMailClient() {
    const CSearchKey clients(Platform::HkeyLocalMachine, u"Software\\Clients\\Mail");
    const CSearchText name(clients, nullptr);
    if (name.type != Platform::RegSz || std::u16string_view(name.text) == u"Microsoft Outlook") {
        return nullptr;
    }
    // AS DESIGNED: the result of the opening is not checked; every read from a key that was not opened fails.
    const CSearchKey client(clients.Handle(), name.text);
    const Platform::Module module = LoadClientByComponent(client);
    return module ? module : LoadClientByPath(client);
}

Platform::Module LoadClientByComponent(const CSearchKey& key) {
    char component[NarrowSize + 1] = {};
    char language[NarrowSize + 1] = {};
    if (!ReadNarrow(key, "MSIComponentID", component) || !ReadNarrow(key, "MSIApplicationLCID", language)) {
        return nullptr;
    }
    const Platform::Module library = LoadComponentLibrary();
    if (!library) {
        return nullptr;
    }
    char path[NarrowSize + 1] = {};
    auto* const getPath =
        reinterpret_cast<GetComponentPathEntry*>(Platform::GetProcAddress(library, "FGetComponentPath"));
    const bool isKnown = getPath && getPath(component, language, path, NarrowSize, 0) != 0;
    Platform::FreeLibrary(library);
    return isKnown ? Platform::LoadLibraryA(path) : nullptr;
}

Platform::Module LoadClientByPath(const CSearchKey& key) {
    const Platform::Module module = LoadNamedLibrary(key, u"DllPathEx");
    return module ? module : LoadNamedLibrary(key, u"DllPath");
}

Platform::Module LoadSystemMapi() {
    CPathText folder;
    CPathText path;
    const std::uint32_t length = Platform::GetSystemDirectory(folder.Buffer(), Platform::MaxPath);
    const bool hasPath =
        length > 0 && length < Platform::MaxPath && path.Format(u"%s\\%s", folder.Text(), u"mapi32.dll");
    return hasPath ? Platform::LoadLibraryEx(path.Text(), 0) : nullptr;
}

} // namespace Mapi
