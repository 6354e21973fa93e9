#include "platform/inc/modules.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/fullpath.h"
#include "platform/linux/loadedmodules.h"
#include "platform/linux/nativetext.h"
#include "platform/linux/paths.h"
#include "platform/linux/searchfolders.h"
#include <algorithm>
#include <dlfcn.h>
#include <link.h>
#include <mutex>
#include <string>
#include <unistd.h>
#include <vector>

namespace Platform {

namespace {

/// The folder of SetDllDirectory, in Windows syntax.
struct DllDirectory {
    std::mutex lock;
    bool isSet = false;
    std::u16string folder;
};

// Never destroyed: a library may be loaded by a static object's end.
DllDirectory& ChosenDllDirectory() {
    static DllDirectory& chosen = *new DllDirectory;
    return chosen;
}

std::vector<std::u16string> LibraryFolders() {
    std::vector<std::u16string> folders;
    for (const std::string& folder : SearchFolders()) {
        folders.push_back(WideName(folder));
    }
    DllDirectory& chosen = ChosenDllDirectory();
    const std::lock_guard guard(chosen.lock);
    if (chosen.isSet) {
        constexpr std::ptrdiff_t currentFolder = 2;
        folders.erase(folders.begin() + currentFolder);
        if (!chosen.folder.empty()) {
            folders.insert(folders.begin() + 1, chosen.folder);
        }
    }
    return folders;
}

// Hands the native files that a name may mean to `attempt`, in the order of the search, until it returns true. A folder
// is not looked into before its turn: to find a name in another case all of its entries are read.
template <class TAttempt>
bool TryCandidates(std::u16string_view name, TAttempt attempt) {
    const std::vector<std::u16string> names = CandidateNames(name);
    const bool isPlain = IsPlainName(name);
    for (const std::u16string& folder : isPlain ? LibraryFolders() : std::vector<std::u16string>(1)) {
        for (const std::u16string& candidate : names) {
            std::u16string path = folder;
            path.append(isPlain ? u"/" : u"").append(candidate);
            std::string native;
            if (MapPath(path, native) && attempt(native)) {
                return true;
            }
        }
    }
    return false;
}

// The files of all loaded libraries with one of these names, whatever folder they came from.
std::vector<std::string> LoadedFiles(const std::vector<std::u16string>& names) {
    struct Search {
        const std::vector<std::u16string>& names;
        std::vector<std::string> files;
    } search{names, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            const std::string file = info->dlpi_name;
            const std::u16string name = WideName(file.substr(file.find_last_of('/') + 1));
            if (std::any_of(wanted.names.begin(), wanted.names.end(),
                            [&name](const std::u16string& candidate) { return NamesEqual(name, candidate); })) {
                wanted.files.push_back(file);
            }
            return 0;
        },
        &search);
    return std::move(search.files);
}

// A loaded library, counted once more; null if it is not loaded.
void* FindLoaded(const char16_t* name) {
    void* module = nullptr;
    const auto isLoaded = [&module](const std::string& file) {
        module = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
        return module != nullptr;
    };
    const std::vector<std::string> files =
        IsPlainName(name) ? LoadedFiles(CandidateNames(name)) : std::vector<std::string>();
    if (!std::any_of(files.begin(), files.end(), isLoaded) && (IsPlainName(name) || !TryCandidates(name, isLoaded))) {
        SetLastError(ErrorModuleNotFound);
    }
    return module;
}

} // namespace

bool IsLoaded(Module module) {
    struct Search {
        const void* wanted;
        bool found;
    } search{module, module == nullptr};
    // The loader counts its modules under its lock; only the first call is needed, and its list stands still meanwhile.
    dl_iterate_phdr(
        [](dl_phdr_info*, std::size_t, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            for (const link_map* map = _r_debug.r_map; map && !wanted.found; map = map->l_next) {
                wanted.found = map == wanted.wanted;
            }
            return 1;
        },
        &search);
    return search.found;
}

Module LoadLibraryEx(const char16_t* name, std::uint32_t flags) {
    PLATFORM_FAULT(LoadLibraryEx, nullptr);
    static_cast<void>(flags); // a library's own dependencies are found by what it was linked with
    void* module = nullptr;
    const bool isThere = TryCandidates(name, [&module](const std::string& file) {
        if (access(file.c_str(), F_OK) != 0) {
            return false;
        }
        module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!module) {
            SetLastError(access(file.c_str(), R_OK) == 0 ? ErrorBadExeFormat : ErrorAccessDenied);
        }
        return true;
    });
    if (isThere) {
        return static_cast<Module>(module);
    }
    // Last, where the loader itself would look: LD_LIBRARY_PATH and the system's library folders.
    for (const std::u16string& candidate : CandidateNames(name)) {
        module = IsPlainName(name) ? dlopen(NativeName(candidate).c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr;
        if (module) {
            return static_cast<Module>(module);
        }
    }
    SetLastError(ErrorModuleNotFound);
    return nullptr;
}

Module GetModuleHandle(const char16_t* name) {
    PLATFORM_FAULT(GetModuleHandle, nullptr);
    void* module = FindLoaded(name);
    if (module) {
        dlclose(module); // whoever loaded it still holds it
    }
    return static_cast<Module>(module);
}

bool GetModuleHandleEx(std::uint32_t, const char16_t* name, Module& module) {
    module = nullptr;
    PLATFORM_FAULT(GetModuleHandleEx, false);
    module = static_cast<Module>(FindLoaded(name));
    return module != nullptr;
}

Module LoadLibraryA(const char* path) {
    return LoadLibraryEx(Utf16Text(path).c_str(), 0);
}

bool SetDllDirectory(const char16_t* folder) {
    PLATFORM_FAULT(SetDllDirectory, false);
    const std::u16string_view name = folder ? folder : u"";
    if (name.find(u';') != std::u16string_view::npos) {
        return Fail(ErrorInvalidParameter);
    }
    DllDirectory& chosen = ChosenDllDirectory();
    const std::lock_guard guard(chosen.lock);
    chosen.isSet = folder != nullptr;
    chosen.folder = name;
    return true;
}

std::uint32_t GetSystemDirectory(char16_t* buffer, std::uint32_t size) {
    PLATFORM_FAULT(GetSystemDirectory, 0);
    FullPath folder;
    return ParseFullPath(WindowsPath(SystemFolder()), folder) ? CopyPath(folder.Text(), size, buffer) : 0;
}

bool FreeLibrary(Module module) {
    PLATFORM_FAULT(FreeLibrary, false);
    return IsLoaded(module) ? dlclose(module) == 0 || Fail(ErrorInvalidHandle) : Fail(ErrorModuleNotFound);
}

Procedure GetProcAddress(Module module, const char* name) {
    PLATFORM_FAULT(GetProcAddress, nullptr);
    if (!IsLoaded(module)) {
        SetLastError(ErrorModuleNotFound);
        return nullptr;
    }
    auto entry = reinterpret_cast<Procedure>(dlsym(module, name));
    if (!entry) {
        SetLastError(ErrorProcedureNotFound);
    }
    return entry;
}

Module GetProgramModule() {
    static auto* const program = static_cast<Module>(dlopen(nullptr, RTLD_NOW));
    return program;
}

std::uint32_t GetModuleFileName(Module module, char16_t* buffer, std::uint32_t size) {
    PLATFORM_FAULT(GetModuleFileName, 0);
    const link_map* map = nullptr;
    if (module && module != GetProgramModule() && (!IsLoaded(module) || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0)) {
        SetLastError(ErrorModuleNotFound);
        return 0;
    }
    const std::u16string path = WindowsPath(map ? Resolve(map->l_name) : ProgramFile());
    if (path.size() < size) {
        *std::copy(path.begin(), path.end(), buffer) = u'\0';
        return static_cast<std::uint32_t>(path.size());
    }
    if (size > 0) {
        *std::copy_n(path.begin(), size - 1, buffer) = u'\0';
    }
    SetLastError(ErrorInsufficientBuffer);
    return size;
}

} // namespace Platform
