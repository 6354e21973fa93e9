// Outlook's own MAPI library, "MSMAPI32.DLL", of which there is one for each language.
#include "mapi/ProviderSearch.h"

#include "platform/inc/installer.h"
#include "platform/inc/locale.h"
#include "platform/inc/modules.h"

namespace Mapi {

namespace {

using LanguageSource = std::uint32_t();

constexpr LanguageSource* LanguageSources[] = {
    &ReadOutlookLcid,
    &Platform::GetUserDefaultLCID,
    &Platform::GetSystemDefaultLCID,
    [] { return Platform::LcidEnglishUnitedStates; },
};

// Tries one language after the other until one gives a library. AS DESIGNED: each call reads the four languages anew.
template <class TAttempt>
Platform::Module ForEachLanguage(TAttempt attempt) {
    for (LanguageSource* const source : LanguageSources) {
        const std::uint32_t language = source();
        const Platform::Module module = language != 0 ? attempt(language) : nullptr;
        if (module) {
            return module;
        }
    }
    return nullptr;
}

Platform::Module LoadByLanguage(const char16_t* componentId, const char16_t* qualifierFormat) {
    return ForEachLanguage([&](std::uint32_t language) -> Platform::Module {
        CFixedText<32> qualifier;
        return qualifier.Format(qualifierFormat, language) ? LoadQualifiedComponent(componentId, qualifier.Text())
                                                           : nullptr;
    });
}

Platform::Module LoadByComponent(const CSearchKey& key) {
    const CSearchValue<0x54> componentId(key, u"MSIComponentID");
    if (componentId.type != Platform::RegSz) {
        return nullptr;
    }
    const Platform::Module module = LoadByLanguage(componentId.text, u"%lu\\NT");
    return module ? module : LoadByLanguage(componentId.text, u"%lu");
}

Platform::Module Fail(std::uint32_t code) {
    Platform::SetLastError(code);
    return nullptr;
}

std::u16string_view WithoutSeparator(std::u16string_view relativePath) {
    return relativePath.substr(relativePath.starts_with(u'\\') ? 1 : 0);
}

// AS DESIGNED: the limit is on the sum of both lengths as given, although joining may add or drop a separator.
bool FitTogether(std::u16string_view folder, std::u16string_view relativePath) {
    return folder.size() + relativePath.size() <= Platform::MaxPath;
}

Platform::Module LoadJoined(std::u16string_view folder, std::u16string_view relativePath) {
    CFixedText<Platform::MaxPath + 2> path; // a separator and the terminator come on top of the sum
    path.Assign(folder.substr(0, folder.size() - (folder.ends_with(u'\\') ? 1 : 0)));
    path.Append(u"\\");
    path.Append(WithoutSeparator(relativePath));
    return Platform::LoadLibraryEx(path.Text(), 0);
}

// AS DESIGNED: if the folder of common files is a file, the library is looked for beside that file.
Platform::Module LoadBeside(const char16_t* file, std::u16string_view relativePath) {
    CPathText path;
    char16_t* filePart = nullptr;
    const std::uint32_t length = Platform::GetFullPathName(file, Platform::MaxPath, path.Buffer(), &filePart);
    if (length == 0) {
        return nullptr; // with the last error of the call
    }
    if (length > Platform::MaxPath) {
        return Fail(Platform::ErrorInsufficientBuffer);
    }
    if (filePart) {
        *filePart = u'\0';
    }
    const std::u16string_view name = WithoutSeparator(relativePath);
    if (!FitTogether(path.View(), name)) {
        return Fail(Platform::ErrorInsufficientBuffer);
    }
    CFixedText<Platform::MaxPath + 1> whole;
    whole.Assign(path.View());
    whole.Append(name);
    return Platform::LoadLibraryEx(whole.Text(), 0);
}

Platform::Module LoadUnder(const char16_t* folder, std::u16string_view relativePath) {
    const std::uint32_t attributes = Platform::GetFileAttributes(folder);
    if (attributes == Platform::InvalidFileAttributes) {
        return nullptr; // with the last error of the call
    }
    if ((attributes & Platform::FileAttributeDirectory) == 0) {
        return LoadBeside(folder, relativePath);
    }
    return FitTogether(folder, relativePath) ? LoadJoined(folder, relativePath)
                                             : Fail(Platform::ErrorInsufficientBuffer);
}

// Replaces a path by that of the library of the same name that the process has already, if there is one.
void PreferLoaded(CPathText& path) {
    CPathText full;
    char16_t* filePart = nullptr;
    const std::uint32_t length = Platform::GetFullPathName(path.Text(), Platform::MaxPath, full.Buffer(), &filePart);
    const bool hasName = length > 0 && length < Platform::MaxPath && filePart;
    if (const Platform::Module loaded = hasName ? Platform::GetModuleHandle(filePart) : nullptr) {
        Platform::GetModuleFileName(loaded, path.Buffer(), Platform::MaxPath);
    }
}

} // namespace

bool LoadMsMapi(Platform::Module& module) {
    module = ForEachLanguage([](std::uint32_t language) -> Platform::Module {
        CPathText path;
        const bool fits = path.Format(u"System\\MSMAPI\\%d\\%s", static_cast<std::int32_t>(language), u"MSMAPI32.DLL");
        return fits ? LoadUnderCommonFiles(path.Text()) : nullptr;
    });
    if (module) {
        return true;
    }
    constexpr const char16_t* client = u"Software\\Clients\\Mail\\Microsoft Outlook";
    const CSearchKey user(Platform::HkeyCurrentUser, client);
    if (user) {
        module = LoadByComponent(user);
    } else if (const CSearchKey machine(Platform::HkeyLocalMachine, client); machine) {
        module = LoadByComponent(machine);
    }
    return module != nullptr;
}

Platform::Module LoadUnderCommonFiles(const char16_t* relativePath) {
    const CSearchKey key(Platform::HkeyLocalMachine, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion",
                         Platform::KeyQueryValue);
    if (!key) {
        return Fail(key.Result());
    }
    const CSearchText value(key, u"CommonFilesDir");
    if (value.result != Platform::ErrorSuccess) {
        return Fail(value.result);
    }
    if (value.type == Platform::RegSz) {
        return LoadUnder(value.text, relativePath);
    }
    if (value.type != Platform::RegExpandSz) {
        return Fail(Platform::ErrorInvalidParameter);
    }
    CPathText folder;
    return ExpandInto(folder, value.text) ? LoadUnder(folder.Text(), relativePath)
                                          : Fail(Platform::ErrorInsufficientBuffer);
}

Platform::Module LoadQualifiedComponent(const char16_t* componentId, const char16_t* qualifier) {
    CFixedText<520> provided;
    std::uint32_t size = 520;
    const std::uint32_t result = Platform::MsiProvideQualifiedComponent(
        componentId, qualifier, Platform::InstallModeExisting, provided.Buffer(), size);
    if (result != Platform::ErrorSuccess) {
        return Fail(result);
    }
    const std::uint32_t attributes = Platform::GetFileAttributes(provided.Text());
    if (attributes == Platform::InvalidFileAttributes || (attributes & Platform::FileAttributeDirectory) != 0) {
        return Fail(Platform::ErrorFileNotFound);
    }
    CPathText path;
    const std::uint32_t length = Platform::GetFullPathName(provided.Text(), Platform::MaxPath, path.Buffer(), nullptr);
    if (length == 0) {
        return nullptr; // with the last error of the call
    }
    if (length > Platform::MaxPath) {
        return Fail(Platform::ErrorFilenameExcedRange);
    }
    PreferLoaded(path);
    return Platform::LoadLibraryEx(path.Text(), 0);
}

} // namespace Mapi
