#include "platform/inc/modules.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/fullpath.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/searchfolders.h"
#include "platform/linux/modules/loadedmodules.h"
#include "platform/linux/text/loadfailure.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <dlfcn.h>
#include <exception>
#include <link.h>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace Platform {

namespace {

/// The folder of SetDllDirectory, in Windows syntax; empty for none.
struct DllDirectory {
    std::mutex lock;
    std::u16string folder;
};

// Never destroyed: a library may be loaded by a static object's end.
DllDirectory& ChosenDllDirectory() {
    static DllDirectory& chosen = *new DllDirectory;
    return chosen;
}

std::vector<std::u16string> LibraryFolders() {
    std::vector<std::u16string> folders = SearchFolders();
    DllDirectory& chosen = ChosenDllDirectory();
    const std::lock_guard guard(chosen.lock);
    if (!chosen.folder.empty() && !folders.empty()) {
        folders.insert(folders.begin() + 1, chosen.folder); // behind the program's
    }
    return folders;
}

// The loader would wait for the other end of a pipe.
bool IsRegularFile(const std::string& native) {
    struct stat status {};
    return stat(native.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Hands the native files that a name may mean to `attempt`, in the order of the search, until it returns true. Each is
// a whole path, for the loader would look for a plain name in places of its own. A folder is not looked into before its
// turn: to find a name in another case all of its entries are read.
template <class TAttempt>
bool TryCandidates(std::u16string_view name, TAttempt attempt) {
    const std::vector<std::u16string> names = CandidateNames(name);
    const bool isPlain = IsPlainName(name);
    for (const std::u16string& folder : isPlain ? LibraryFolders() : std::vector<std::u16string>(1)) {
        for (const std::u16string& candidate : names) {
            std::u16string path = folder;
            path.append(isPlain ? u"/" : u"").append(candidate);
            std::string native;
            if (MapPath(path, native) && IsRegularFile(native) && attempt(native)) {
                return true;
            }
        }
    }
    return false;
}

struct LoadedSearch {
    const std::vector<std::u16string>& names;
    std::vector<std::string> files;
    std::exception_ptr failure;

    void Look(const std::string& file) {
        const std::u16string name = WideName(file.substr(file.find_last_of('/') + 1));
        if (std::any_of(names.begin(), names.end(),
                        [&name](const std::u16string& candidate) { return NamesEqual(name, candidate); })) {
            files.push_back(file);
        }
    }
};

// The files of all loaded libraries with one of these names, whatever folder they came from.
std::vector<std::string> LoadedFiles(const std::vector<std::u16string>& names) {
    LoadedSearch search{names, {}, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& going = *static_cast<LoadedSearch*>(data);
            try {
                going.Look(info->dlpi_name);
            } catch (...) {
                going.failure = std::current_exception(); // must not pass through the loader's frames
            }
            return going.failure ? 1 : 0;
        },
        &search);
    if (search.failure) {
        std::rethrow_exception(search.failure);
    }
    return std::move(search.files);
}

// A loaded library, counted once more; null if it is not loaded.
Module FindLoaded(const char16_t* name) {
    void* module = nullptr;
    const auto isLoaded = [&module](const std::string& file) {
        module = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
        return module != nullptr;
    };
    if (IsPlainName(name)) {
        const std::vector<std::string> files = LoadedFiles(CandidateNames(name));
        static_cast<void>(std::any_of(files.begin(), files.end(), isLoaded));
    } else {
        TryCandidates(name, isLoaded);
    }
    if (!module) {
        SetModuleError(ErrorModuleNotFound);
    }
    return static_cast<Module>(module);
}

// Hands the loader's modules to `visit`, the program first, until it returns true; whether it did.
template <class TVisit>
bool AnyModule(TVisit visit) {
    struct Walk {
        TVisit& visit;
        bool found;
    } walk{visit, false};
    // The loader counts its modules under its lock; only the first call is needed, and its list stands still meanwhile.
    dl_iterate_phdr(
        [](dl_phdr_info*, std::size_t, void* data) {
            auto& going = *static_cast<Walk*>(data);
            for (const link_map* map = _r_debug.r_map; map && !going.found; map = map->l_next) {
                going.found = going.visit(map);
            }
            return 1;
        },
        &walk);
    return walk.found;
}

} // namespace

bool IsLoaded(Module module) {
    return !module || AnyModule([module](const link_map* map) { return map == static_cast<const void*>(module); });
}

void* FindExport(const char* name) {
    void* function = nullptr;
    // By its file: an entry of the loader's list is not a handle for every module (the kernel's own is none).
    AnyModule([&](const link_map* map) {
        void* const module = *map->l_name == '/' ? dlopen(map->l_name, RTLD_NOW | RTLD_NOLOAD) : nullptr;
        if (module) {
            function = dlsym(module, name);
            dlclose(module); // whoever loaded it still holds it
        }
        return function != nullptr;
    });
    return function;
}

// Without flags: a library's own dependencies are found by what it was linked with.
Module LoadLibraryEx(const char16_t* name, std::uint32_t) {
    PLATFORM_FAULT(LoadLibraryEx, nullptr);
    void* module = nullptr;
    const bool isThere = TryCandidates(name, [&module](const std::string& file) {
        module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!module) {
            SetModuleErrorFromLoader(file);
        }
        return true;
    });
    if (!isThere) {
        SetModuleError(ErrorModuleNotFound);
    }
    return static_cast<Module>(module);
}

void FoldLibraryPath(char16_t*) {
    // A name in another case may belong to another file.
}

Module GetModuleHandle(const char16_t* name) {
    PLATFORM_FAULT(GetModuleHandle, nullptr);
    Module module = FindLoaded(name);
    if (module) {
        dlclose(module); // whoever loaded it still holds it
    }
    return module;
}

bool GetModuleHandleEx(std::uint32_t, const char16_t* name, Module& module) {
    module = nullptr;
    PLATFORM_FAULT(GetModuleHandleEx, false);
    module = FindLoaded(name);
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
    chosen.folder = name;
    return true;
}

std::uint32_t GetSystemDirectory(char16_t* buffer, std::uint32_t size) {
    PLATFORM_FAULT(GetSystemDirectory, 0);
    const std::string native = SystemFolder();
    FullPath folder;
    if (native.empty()) {
        return Fail(ErrorPathNotFound, 0U);
    }
    return ParseFullPath(WindowsPath(native), folder) ? CopyPath(folder.Text(), size, buffer) : 0;
}

bool FreeLibrary(Module module) {
    if (!module || !IsLoaded(module)) {
        SetModuleError(ErrorModuleNotFound);
        return false;
    }
    const bool isClosed = dlclose(module) == 0;
    PLATFORM_FAULT(FreeLibrary, false);
    return isClosed || Fail(ErrorInvalidHandle);
}

Procedure GetProcAddress(Module module, const char* name) {
    PLATFORM_FAULT(GetProcAddress, nullptr);
    if (!IsLoaded(module)) {
        SetModuleError(ErrorModuleNotFound);
        return nullptr;
    }
    auto entry = reinterpret_cast<Procedure>(dlsym(module, name));
    if (!entry) {
        SetModuleError(ErrorProcedureNotFound);
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
        SetModuleError(ErrorModuleNotFound);
        return 0;
    }
    const std::string file = map ? Resolve(map->l_name) : ProgramFile();
    if (file.empty()) {
        return Fail(ErrorFileNotFound, 0U);
    }
    const std::u16string path = WindowsPath(file);
    if (path.size() < size) {
        *std::copy(path.begin(), path.end(), buffer) = u'\0';
        return static_cast<std::uint32_t>(path.size());
    }
    if (size > 0) {
        *std::copy_n(path.begin(), size - 1, buffer) = u'\0';
    }
    return Fail(ErrorInsufficientBuffer, size);
}

} // namespace Platform
