// Where message texts and icons come from: the modules that carry them, and the interface language. Static modules are
// searched in every language. Language modules are resource libraries on disk, one for each language and prefix, which
// are loaded when their language is chosen. The catalogue (message.h) looks up here, the message box finds its icons,
// and the console application chooses the language.
#pragma once

#include "foundation/inc/criticalsection.h"
#include "foundation/inc/dynamicbitset.h"
#include "foundation/inc/map.h"
#include "foundation/inc/pointerarray.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/types.h"

namespace Tsx {

constexpr std::uint32_t NoLanguage = 0xFFFFFFFF;

/// A language that can be chosen.
struct CLanguageInfo {
    std::uint32_t language;
    CUnicodeString name; // what it calls itself
};

/// How a module came here.
enum TResourceModuleKind : std::int32_t {
    RM_Static = 1, // the handle is not owned
    RM_Loaded = 2  // freed with the record
};

/// One module, with the functions of its message table: each null where the module has none. A plain record on the
/// process heap.
struct CResourceModule {
    Platform::Module handle;
    std::int32_t kind; // a TResourceModuleKind
    std::uint32_t (*getResourceId)(const char16_t* name);
    std::int32_t (*numberOfMessages)();
    const char16_t* (*getMessageName)(std::int32_t index);

    static void Destroy(CResourceModule* module);

    /// The module's text for a name; false if it has none.
    bool FindText(const char16_t* name, CUnicodeString& text) const;
    /// Appends all names of the module's table.
    void AppendNames(CArray<CUnicodeString>& names) const;
};

using CResourceModules = CPointerArray<CResourceModule, CDestroyer<CResourceModule>, CProcessHeapPolicy>;

/// The modules of one language.
struct CLanguageModules {
    CResourceModules modules;
    std::int32_t useCount = 0; // by the process and by the threads that have the language
    std::uint32_t language = NoLanguage;

    static void Destroy(CLanguageModules* list);
};

template <class TValue>
using CLanguageMap = CMap<std::uint32_t, TValue, CNumberKeyTraits, CProcessHeapPolicy>;
constexpr std::int32_t LanguageMapSize = 31; // a language map's initial hash size

/// One family of resource libraries.
struct CResourcePrefix {
    CUnicodeString directory;
    CUnicodeString prefix; // the beginning of the file names
    bool scanned = false;
    CBasicDynamicBitSet<CProcessHeapPolicy> available; // language numbers found on disk
    CLanguageMap<CUnicodeString> names{LanguageMapSize};

    static void Destroy(CResourcePrefix* prefix);

    /// The library of a language: the prefix, the number and ".dll" in the directory.
    CUnicodeString GetFileName(std::uint32_t language) const;
};

using CResourcePrefixes = CPointerArray<CResourcePrefix, CDestroyer<CResourcePrefix>, CProcessHeapPolicy>;

/// The language that a thread has for itself, which takes the place of the current one in its lookups. A new thread's
/// record is all zero, and so far nothing sets it.
struct CThreadLanguage {
    std::uint32_t inverted; // ~language, so that zero is NoLanguage
};

/// Two halves, each with its lock and its source: the static modules and the look-up over both (resourceinfo.cpp), and
/// the languages (languages.cpp). Any thread may look up messages while another changes the language. No lock is held
/// while a text is shown, so that a handler may look up what it likes.
class CResourceBase {
public:
    /// `listsToKeep`: how many released languages keep their libraries loaded.
    explicit CResourceBase(std::int32_t listsToKeep = 0) : keptListsLimit(listsToKeep) {}
    ~CResourceBase();
    CResourceBase(const CResourceBase&) = delete;
    CResourceBase& operator=(const CResourceBase&) = delete;

    /// Adds a module that is searched in every language, before the static modules that are there already. One of those
    /// moves to that place.
    void RegisterStaticModule(Platform::Module handle);
    /// A module that is not registered is an internal error.
    void UnregisterStaticModule(Platform::Module handle);

    /// Adds a family of resource libraries. Only before Initialize: an internal error afterwards.
    void AddPrefix(const CUnicodeString& directory, const CUnicodeString& prefix);

    /// Finds the languages that all prefixes have and makes the one that fits the system best the current one. Raises
    /// what the search of a directory raises.
    void Initialize();
    /// Unloads all language modules; the calling thread has no language of its own afterwards.
    void Deinitialize();

    /// The index of a language number among those that can be chosen, in ascending order; NoLanguage for any other. An
    /// internal error before Initialize.
    std::uint32_t FindLanguage(std::uint32_t language);
    /// What a language calls itself; the number in decimal where that is not known.
    CUnicodeString GetLanguageName(std::uint32_t language);
    /// Whether the system has a language of the table. An internal error for a number that is none of the table's.
    bool IsLanguageSupported(std::uint32_t language);
    /// The language that fits the system best; see ChooseDefaultLanguage. An internal error when none can be chosen.
    std::uint32_t GetDefaultLanguage();
    /// Makes a language the current one. One that cannot be chosen is an internal error. One that the system does not
    /// have is told, and refused if another is current. A library that cannot be loaded is told too, and the language
    /// goes without it.
    void SetCurrentLanguage(std::uint32_t language);

    /// The text of a message by name; false if no module has one. The language's modules are asked first, and of either
    /// kind the later ones before the earlier.
    bool LookupMessage(const char16_t* name, CUnicodeString& text);
    bool LookupMessage(const CUnicodeString& name, CUnicodeString& text) { return LookupMessage(name.Text(), text); }
    /// The names in the tables of the same modules, sorted by code units, each once.
    void GetAllMessageNames(CArray<CUnicodeString>& names);
    /// The module that has the named icon, in the order of LookupMessage; null if none does.
    Platform::Module FindModuleWithIcon(const char16_t* name);

protected:
    using CFileNames = CArray<CUnicodeString, CProcessHeapPolicy>;

    CCriticalSection mainLock;   // guards everything but the static modules
    CCriticalSection staticLock; // guards them; the two are never held both
    bool initialized = false;
    std::uint32_t currentLanguage = NoLanguage;
    CArray<CLanguageInfo, CProcessHeapPolicy> languages; // that every prefix has, in ascending order
    CLanguageMap<std::int32_t> languageIndex{LanguageMapSize};
    CResourcePrefixes prefixes;
    CResourceModules staticModules;
    CLanguageMap<CLanguageModules*> languageModules{LanguageMapSize}; // owned
    std::int32_t keptListsLimit;
    CPointerArray<CLanguageModules, CDestroyer<CLanguageModules>, CProcessHeapPolicy> keptLists; // oldest first

    // Of the static modules, under staticLock, which they take.
    void RemoveModulesWithoutKind(); // there are none in normal use

    // Of the look-up. The second takes both locks, one after the other.
    const CResourceModules* ModulesOfThread() const; // under mainLock
    template <class TPredicate>
    Platform::Module FindModule(TPredicate isWanted);

    // Of the languages, under mainLock.
    void CollectLanguages();
    CUnicodeString DescribeMissingLibraries() const;
    CLanguageModules& AcquireLanguage(std::uint32_t language);
    void ReleaseLanguage(std::uint32_t language);
    void ReleaseThreadLanguage();
    /// Appends the names of the files that could not be loaded to `failed`.
    void AddLibraries(CLanguageModules& list, CFileNames& failed) const;
    void DestroyLanguageModules();

    // Of the languages; they take mainLock.
    bool IsKnown(std::uint32_t language);
    bool HasCurrentLanguage();
    void SwitchLanguage(std::uint32_t language);
};

CResourceBase& GetResourceBase();

} // namespace Tsx
