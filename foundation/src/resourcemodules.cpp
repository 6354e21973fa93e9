// Single modules and the libraries of a prefix: finding, loading and asking them.
#include "foundation/src/resourcemodules.h"

#include "foundation/inc/debugtrace.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/modulelist.h"
#include "foundation/inc/versioninfo.h"
#include "platform/inc/modules.h"
#include <algorithm>

namespace Tsx {

namespace {

template <class TFunction>
void TakeExport(TFunction*& function, Platform::Module module, const char* name) {
    function = reinterpret_cast<TFunction*>(Platform::GetProcAddress(module, name));
}

// The language number that follows the prefix in the name of a file; -1 if something else does.
std::int32_t ReadLibraryNumber(const CUnicodeString& fileName, const CUnicodeString& prefix) {
    std::int32_t number = 0;
    const bool isNumber = FileSystem::GetName(fileName).Mid(prefix.Length()).ToInt(number);
    return isNumber && number >= 0 && number < LibraryNumberCount ? number : -1;
}

bool IsResourceLibrary(const CUnicodeString& fileName) {
    CVersionInfo version;
    version.Load(fileName);
    return version.GetString(u"FileDescription").CompareNoCase(u"Resource DLL") == 0;
}

} // namespace

void CResourceModule::Destroy(CResourceModule* module) {
    if (module->kind == RM_Loaded) {
        Platform::FreeLibrary(module->handle);
    }
    FreeRecord(module);
}

bool CResourceModule::FindText(const char16_t* name, CUnicodeString& text) const {
    const std::uint32_t id = getResourceId ? getResourceId(name) : 0;
    return id != 0 && text.LoadString(handle, id);
}

void CResourceModule::AppendNames(CArray<CUnicodeString>& names) const {
    const std::int32_t count = numberOfMessages && getMessageName ? numberOfMessages() : 0;
    for (std::int32_t i = 0; i < count; ++i) {
        names.Append(getMessageName(i));
    }
}

std::int32_t FindHandle(const CResourceModules& modules, Platform::Module handle) {
    const auto* const found = std::find_if(
        modules.begin(), modules.end(), [handle](const CResourceModule* module) { return module->handle == handle; });
    return found != modules.end() ? static_cast<std::int32_t>(found - modules.begin()) : -1;
}

void FillModule(CResourceModule& record, Platform::Module handle, TResourceModuleKind kind) {
    record.handle = handle;
    record.kind = kind;
    TakeExport(record.getResourceId, handle, "GetResourceID");
    TakeExport(record.numberOfMessages, handle, "NumberOfMessages");
    TakeExport(record.getMessageName, handle, "GetMessageName");
}

void CResourcePrefix::Destroy(CResourcePrefix* prefix) {
    FreeRecord(prefix);
}

CUnicodeString CResourcePrefix::GetFileName(std::uint32_t language) const {
    return FileSystem::MergeName(directory, CUnicodeString::Format(u"%s%u", prefix, language), u".dll");
}

CRecordHolder<CResourceModule> LoadResourceLibrary(const CResourcePrefix& prefix, std::uint32_t language) {
    const CUnicodeString name = prefix.GetFileName(language);
    if (!FileSystem::GetFileSystem(name).CheckFile(name, FA_Exists)) {
        ReleaseTrace(u"Tessarix: Resource DLL %s not found.\n", name);
        return nullptr;
    }
    if (!IsResourceLibrary(name)) {
        ReleaseTrace(u"Tessarix: Resource DLL candidate %s has invalid version info\n", name);
        return nullptr;
    }
    CRecordHolder<CResourceModule> library = MakeRecord<CResourceModule>(); // first: it may raise
    const Platform::Module handle = LoadLibrarySearched(name.Text());
    if (!handle) {
        ReleaseTrace(u"Tessarix: Can't load resource DLL %s.\n", name);
        return nullptr;
    }
    ReleaseTrace(u"Tessarix: Resource DLL %s is loaded.\n", name);
    FillModule(*library, handle, RM_Loaded);
    return library;
}

void ScanPrefix(CResourcePrefix& prefix) {
    prefix.available = {};
    prefix.names.DeleteAll();
    CArray<CUnicodeString> files;
    FileSystem::GetFileNames(prefix.directory, files, prefix.prefix + u"*.dll");
    for (const CUnicodeString& file : files) {
        const std::int32_t number = ReadLibraryNumber(file, prefix.prefix);
        if (number < 0) {
            continue;
        }
        const auto language = static_cast<std::uint32_t>(number);
        if (const CRecordHolder<CResourceModule> library = LoadResourceLibrary(prefix, language)) {
            CUnicodeString name;
            library->FindText(CURRENT_LANGUAGE_NAME.Name, name);
            prefix.available.Set(number);
            prefix.names.Set(language, name);
        }
    }
    prefix.scanned = true;
}

} // namespace Tsx
