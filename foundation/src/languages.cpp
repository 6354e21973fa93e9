// The languages of the resource base: which there are, which one is chosen, and the modules of those in use.
#include "foundation/inc/assertion.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/messagenames.h"
#include "foundation/src/languagetable.h"
#include "foundation/src/resourcemodules.h"
#include "foundation/src/statics.h"
#include "platform/inc/locale.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/text.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\languages";

// What the first prefix that knows it calls a language; its number where none does.
CUnicodeString NameOfLanguage(const CResourcePrefixes& prefixes, std::int32_t number) {
    for (const CResourcePrefix* prefix : prefixes) {
        CUnicodeString name = prefix->names.Get(static_cast<std::uint32_t>(number));
        if (!name.IsEmpty()) {
            return name;
        }
    }
    return CUnicodeString::FromInt(number);
}

struct CHasLibrary {
    std::int32_t number;
    bool operator()(const CResourcePrefix* prefix) const { return prefix->available.Has(number); }
};

void ShowLoadFailures(const CArray<CUnicodeString, CProcessHeapPolicy>& files) {
    for (const CUnicodeString& file : files) {
        DisplayMessage(FormatMessage(ERR_CANT_LOAD_DLL, file), ResourceFailureStyle);
    }
}

} // namespace

void CLanguageModules::Destroy(CLanguageModules* list) {
    FreeRecord(list);
}

CResourceBase::~CResourceBase() {
    DestroyLanguageModules();
}

void CResourceBase::AddPrefix(const CUnicodeString& directory, const CUnicodeString& prefix) {
    CRecordHolder<CResourcePrefix> added = MakeRecord<CResourcePrefix>();
    added->directory = directory;
    added->prefix = prefix;
    bool isInTime = false;
    {
        const CCriticalSectionLock guard(mainLock);
        isInTime = !initialized;
        if (isInTime) {
            AppendRecord(prefixes, added);
        }
    }
    TSX_ASSERT(isInTime, ModuleName);
}

void CResourceBase::Initialize() {
    CUnicodeString missing;
    bool hasLanguages = false;
    {
        const CCriticalSectionLock guard(mainLock);
        CollectLanguages();
        if (HasDebugFlag(DebugCheckAllResourceModulesExistance)) {
            missing = DescribeMissingLibraries();
        }
        hasLanguages = !languages.IsEmpty();
        initialized = true;
    }
    if (!missing.IsEmpty()) {
        DisplayMessage(missing, ResourceFailureStyle);
    }
    if (hasLanguages) {
        SetCurrentLanguage(GetDefaultLanguage());
    }
}

void CResourceBase::Deinitialize() {
    {
        const CCriticalSectionLock guard(mainLock);
        ReleaseThreadLanguage();
        DestroyLanguageModules();
        keptLists.DeleteAll();
        for (CResourcePrefix* prefix : prefixes) {
            prefix->scanned = false;
        }
        currentLanguage = NoLanguage;
        initialized = false;
    }
    RemoveModulesWithoutKind();
}

void CResourceBase::CollectLanguages() {
    for (CResourcePrefix* prefix : prefixes) {
        if (!prefix->scanned) {
            ScanPrefix(*prefix);
        }
    }
    languages.RemoveAll();
    languageIndex.DeleteAll();
    for (std::int32_t number = 0; number < LibraryNumberCount && !prefixes.IsEmpty(); ++number) {
        if (!std::all_of(prefixes.begin(), prefixes.end(), CHasLibrary{number})) {
            continue;
        }
        const auto language = static_cast<std::uint32_t>(number);
        CLanguageInfo info{language, NameOfLanguage(prefixes, number)};
        languageIndex.Set(language, languages.Size());
        languages.Append(std::move(info));
    }
}

CUnicodeString CResourceBase::DescribeMissingLibraries() const {
    CUnicodeString text;
    for (const CResourcePrefix* prefix : prefixes) {
        CUnicodeString missing;
        for (std::int32_t number = 0; number < LibraryNumberCount; ++number) {
            const CHasLibrary hasIt{number};
            if (!hasIt(prefix) && std::any_of(prefixes.begin(), prefixes.end(), hasIt)) {
                missing += missing.IsEmpty() ? u"" : u", ";
                missing += CUnicodeString::FromInt(number);
            }
        }
        if (!missing.IsEmpty()) {
            const char16_t* const parameters[] = {prefix->prefix.Text(), missing.Text()};
            text += SubstituteParams(u"For prefix '%0' resource modules for following languages: %1 are missing.",
                                     parameters, 2);
            text += u'\n';
        }
    }
    return text;
}

std::uint32_t CResourceBase::FindLanguage(std::uint32_t language) {
    bool isReady = false;
    std::uint32_t index = NoLanguage;
    {
        const CCriticalSectionLock guard(mainLock);
        isReady = initialized;
        if (const std::int32_t* found = languageIndex.Find(language)) {
            index = static_cast<std::uint32_t>(*found);
        }
    }
    TSX_REQUIRE(isReady, ModuleName, NoLanguage);
    return index;
}

CUnicodeString CResourceBase::GetLanguageName(std::uint32_t language) {
    const CCriticalSectionLock guard(mainLock);
    const std::int32_t* index = languageIndex.Find(language);
    return index ? languages[*index].name : CUnicodeString::Format(u"%u", language);
}

bool CResourceBase::IsLanguageSupported(std::uint32_t language) {
    TSX_REQUIRE(language < LanguageCount, ModuleName, false);
    return Platform::IsValidLocale(GetLanguageId(LanguageTable[language]), Platform::LcidInstalled);
}

std::uint32_t CResourceBase::GetDefaultLanguage() {
    CLanguageSet known;
    bool hasLanguages = false;
    {
        const CCriticalSectionLock guard(mainLock);
        hasLanguages = !languages.IsEmpty();
        for (const CLanguageInfo& info : languages) {
            if (info.language < LanguageCount) {
                known.set(info.language);
            }
        }
    }
    TSX_REQUIRE(hasLanguages, ModuleName, NoLanguage);
    CLanguageSet supported;
    for (std::uint32_t language = 0; language < LanguageCount; ++language) {
        supported[language] = known[language] && IsLanguageSupported(language);
    }
    return ChooseDefaultLanguage(known, supported, Platform::GetSystemDefaultLangID(), Platform::GetACP());
}

bool CResourceBase::IsKnown(std::uint32_t language) {
    const CCriticalSectionLock guard(mainLock);
    return languageIndex.Has(language);
}

bool CResourceBase::HasCurrentLanguage() {
    const CCriticalSectionLock guard(mainLock);
    return currentLanguage != NoLanguage;
}

void CResourceBase::SetCurrentLanguage(std::uint32_t language) {
    TSX_REQUIRE(IsKnown(language), ModuleName);
    if (!IsLanguageSupported(language)) {
        const CUnicodeString name = GetLanguageName(language);
        const char16_t* const parameters[] = {name.Text()};
        DisplayMessage(
            SubstituteParams(u"The selected interface language ( %0 ) is not supported on the operating system.",
                             parameters, 1),
            Platform::MbOk);
        if (HasCurrentLanguage()) {
            return;
        }
        language = GetDefaultLanguage();
    }
    SwitchLanguage(language);
}

void CResourceBase::SwitchLanguage(std::uint32_t language) {
    CFileNames failed;
    bool isKnown = false;
    {
        const CCriticalSectionLock guard(mainLock);
        isKnown = languageIndex.Has(language); // another thread may have started anew since it was asked
        if (isKnown && language != currentLanguage) {
            ReleaseTrace(u"Tessarix: Changing current language to %s\n", GetLanguageName(language));
            CLanguageModules& list = AcquireLanguage(language);
            // Stored before the old one goes, so that a failure in that leaves a language whose modules are there.
            const std::uint32_t old = std::exchange(currentLanguage, language);
            if (old != NoLanguage) {
                ReleaseLanguage(old);
            }
            AddLibraries(list, failed);
        }
    }
    TSX_REQUIRE(isKnown, ModuleName);
    ShowLoadFailures(failed);
}

void CResourceBase::ReleaseThreadLanguage() {
    CThreadLanguage* own = ThreadLanguage.Find();
    const std::uint32_t language = own ? ~std::exchange(own->inverted, 0) : NoLanguage;
    if (languageModules.Has(language)) { // the record may be of a time before the last stop
        ReleaseLanguage(language);
    }
}

CLanguageModules& CResourceBase::AcquireLanguage(std::uint32_t language) {
    CLanguageModules** present = languageModules.Find(language);
    if (!present) {
        const auto* const kept = std::find_if(keptLists.begin(), keptLists.end(), [language](CLanguageModules* list) {
            return list->language == language;
        });
        if (kept != keptLists.end()) {
            languageModules.Set(language, *kept);
            TakeAt(keptLists, static_cast<std::int32_t>(kept - keptLists.begin()));
        } else {
            CRecordHolder<CLanguageModules> list = MakeRecord<CLanguageModules>();
            list->language = language;
            languageModules.Set(language, list.get());
            static_cast<void>(list.release());
        }
        present = languageModules.Find(language);
    }
    ++(*present)->useCount;
    return **present;
}

void CResourceBase::ReleaseLanguage(std::uint32_t language) {
    CLanguageModules** present = languageModules.Find(language);
    TSX_REQUIRE(present && (*present)->useCount > 0, ModuleName);
    if (--(*present)->useCount > 0) {
        return;
    }
    CRecordHolder<CLanguageModules> list(*present);
    languageModules.Delete(language);
    if (keptListsLimit > 0) {
        while (keptLists.Size() >= keptListsLimit) {
            keptLists.DeleteAt(0);
        }
        AppendRecord(keptLists, list);
    }
}

void CResourceBase::AddLibraries(CLanguageModules& list, CFileNames& failed) const {
    for (const CResourcePrefix* prefix : prefixes) {
        CRecordHolder<CResourceModule> library = LoadResourceLibrary(*prefix, list.language);
        if (!library) {
            failed.Append(prefix->GetFileName(list.language));
        } else if (FindHandle(list.modules, library->handle) < 0) {
            AppendRecord(list.modules, library);
        }
    }
}

void CResourceBase::DestroyLanguageModules() {
    while (!languageModules.IsEmpty()) {
        // Out of the map first: the end of a library may run code that looks up a message.
        const CRecordHolder<CLanguageModules> list(languageModules.begin()->Value);
        languageModules.Delete(list->language);
    }
    languageModules.DeleteAll();
}

} // namespace Tsx
