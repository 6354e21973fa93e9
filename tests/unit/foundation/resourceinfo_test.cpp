#include "foundation/inc/resourceinfo.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/messagenames.h"
#include "foundation/src/languagetable.h"
#include "foundation/src/statics.h"
#include "platform/inc/faults.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

using namespace Tsx;

namespace {

/// What is told: "style text|" for each.
class CTold : public CMessageHandler {
public:
    CUnicodeString texts;

    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        texts += CUnicodeString::Format(u"%u %s|", style, text);
        return Platform::IdOk;
    }
};

/// A resource base beside the program's own.
class CBase : public CResourceBase {
public:
    using CResourceBase::CResourceBase;

    /// What a lookup finds; "(none)" if it finds nothing.
    CUnicodeString Text(const char16_t* name) {
        CUnicodeString text;
        return LookupMessage(name, text) ? text : u"(none)";
    }
};

std::string FileBytes(const char16_t* name) {
    std::ifstream file(TestFilePlace(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Puts one text, wide or narrow, in the place of another of the same length.
template <class TText>
std::string Patched(std::string bytes, const TText& from, const TText& to) {
    const auto raw = [](const TText& text) {
        return std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(text[0]));
    };
    const std::size_t place = bytes.find(raw(from));
    EXPECT_NE(place, std::string::npos);
    return place == std::string::npos ? bytes : bytes.replace(place, raw(to).size(), raw(to));
}

/// A library that says what it is and that no system loads: without a machine, or without segments.
std::string Unloadable(std::string bytes) {
    constexpr std::size_t elfSegmentCount = 56;
    constexpr std::size_t peHeaderPlace = 0x3C;
    std::size_t place = elfSegmentCount;
    if (bytes.starts_with("MZ")) {
        place = static_cast<std::uint8_t>(bytes[peHeaderPlace]) + 4U;
    }
    bytes[place] = bytes[place + 1] = 0;
    return bytes;
}

/// A folder with libraries of all kinds.
class CLibraries : public CTestFolder {
public:
    CLibraries() {
        using namespace std::string_literals;
        const std::string good = FileBytes(TEST_LANGUAGE);
        const std::string lowerCase = Patched(good, u"Resource DLL"s, u"resource dll"s);
        // Of a name that is not found any more, all that is left is a library without a table.
        const std::string bare = Patched(good, "GetResourceID"s, "GetResourceXY"s);
        for (const char16_t* name :
             {u"alpha2.dll", u"alpha128.dll", u"alpha5x.dll", u"alpha.dll", u"alpha 6.dll", u"alpha-1.dll",
              u"alphabet.dll", u"alpha70.dll", u"alpha3.txt", u"beta2.dll", u"beta3.dll", u"beta11.dll", u"beta12.dll",
              u"beta70.dll", u"kept2.dll", u"kept3.dll", u"kept4.dll", u"rare12.dll", u"rare13.dll"}) {
            Write(name, good);
        }
        Write(u"alpha3.dll", lowerCase);
        Write(u"alpha11.dll", bare);
        Write(u"alpha9.dll", Patched(good, u"Resource DLL"s, u"Resource EXE"s));
        Write(u"alpha10.dll", Unloadable(good));
        Write(u"alpha4.dll", "no library at all");
        Write(u"alpha14.dll\\a file", "in a folder that has a library's name");
        Write(u"kept5.dll", FileBytes(GERMAN_LANGUAGE));
    }
};

std::string Numbers(CBase& base) {
    std::string text;
    for (std::uint32_t language = 0; language < 128; ++language) {
        if (base.FindLanguage(language) != NoLanguage) {
            text += std::to_string(language) + ":" + Readable(base.GetLanguageName(language).View()) + " ";
        }
    }
    return text;
}

class ResourceBaseTest : public testing::Test {
protected:
    const CLibraries folder;
    CTold handler;
    const CMessageHandlerScope scope{&handler};
    CBase base; // goes before the folder of its libraries

    bool IsLoaded(const char16_t* name) const { return Platform::GetModuleHandle((folder / name).Text()) != nullptr; }
    CUnicodeString Told() { return std::exchange(handler.texts, {}); }
};

} // namespace

TEST(LanguageTable, TheDefaultFitsTheSystemBest) {
    using TLanguages = std::vector<std::uint32_t>;
    struct Row {
        const char* name;
        TLanguages known, unsupported;
        std::uint32_t systemLanguage, codePage, expected;
    };
    const auto setOf = [](const TLanguages& languages) {
        CLanguageSet set;
        for (const std::uint32_t language : languages) {
            set.set(language);
        }
        return set;
    };
    for (const Row& row : {Row{"the primary language", {2, 3, 5}, {}, 0x080C, 1251, 3},
                           {"the primary language before an earlier code page", {1, 2, 3}, {}, 0x040C, 1251, 3},
                           {"the first of two with the primary language", {27, 13}, {}, 0x0816, 0, 13},
                           {"the code page", {0, 16, 17, 18}, {}, 0x0409 + 0x100, 1250, 16},
                           {"the first supported one", {7, 16, 26}, {7}, 0x0436, 874, 16},
                           {"a fitting one that is not supported", {2, 3}, {3}, 0x040C, 0, 2},
                           {"none is supported", {5, 3, 26}, {3, 5, 26}, 0x040C, 1252, 3},
                           {"a number that is not used", {12}, {12}, 0, 0, 12},
                           {"none at all", {}, {}, 0x0409, 1252, NoLanguage}}) {
        EXPECT_EQ(ChooseDefaultLanguage(setOf(row.known), ~setOf(row.unsupported), row.systemLanguage, row.codePage),
                  row.expected)
            << row.name;
    }
}

// Libraries are named by the numbers, so that two rows in each other's place show people a language that they did not
// choose. The identifiers are those of Windows, the code pages the ones that it gives their languages.
TEST(LanguageTable, NumbersStandForTheirLanguages) {
    constexpr std::uint32_t ids[LanguageCount] = {
        0x409, 0x419, 0x407, 0x40C, 0x422, 0x40A, 0x410, 0x413, 0x406, 0x41D, 0x40B, 0x414, 0,     0x816,
        0x41B, 0x415, 0x405, 0x40E, 0x427, 0x426, 0x425, 0x40F, 0x408, 0x402, 0x41F, 0x444, 0x411, 0x416,
        0x813, 0x40D, 0,     0,     0,     0,     0x439, 0xC1A, 0x41A, 0x418, 0x424, 0x403, 0x42F, 0,
        0x43F, 0x81A, 0,     0,     0,     0,     0,     0,     0,     0,     0,     0,     0,     0,
        0,     0,     0,     0,     0,     0,     0x42A, 0x412, 0x804, 0x404, 0,     0,     0,     0x41E};
    const std::map<std::uint32_t, std::set<std::uint32_t>> codePages = {
        {1250, {14, 15, 16, 17, 36, 37, 38, 43}},
        {1251, {1, 4, 23, 35, 40, 42}},
        {1253, {22}},
        {1254, {24}},
        {1255, {29}},
        {1252, {2, 3, 5, 6, 7, 8, 9, 10, 11, 13, 21, 27, 28, 39}},
        {1257, {18, 19, 20}},
        {1258, {62}},
        {0, {0, 25, 26, 34, 63, 64, 65, 69}}};
    CBase base;
    std::map<std::uint32_t, std::set<std::uint32_t>> found;
    for (std::uint32_t language = 0; language < LanguageCount; ++language) {
        EXPECT_EQ(GetLanguageId(LanguageTable[language]), ids[language]) << language;
        if (ids[language] != 0) {
            found[LanguageTable[language].codePage].insert(language);
            const bool isOfAFormerCountry = language == 35 || language == 43; // which Wine has dropped
            EXPECT_TRUE(base.IsLanguageSupported(language) || isOfAFormerCountry) << language;
        }
    }
    EXPECT_EQ(found, codePages);
    EXPECT_TRUE(Raised<CInternalError>([&base] { base.IsLanguageSupported(70); }));
}

TEST_F(ResourceBaseTest, WithoutPrefixesThereIsNothingToChoose) {
    EXPECT_TRUE(Raised<CInternalError>([this] { base.FindLanguage(0); })) << "too early";
    base.Initialize();
    for (const std::uint32_t language : {0U, 2U, 70U, NoLanguage}) {
        EXPECT_EQ(base.FindLanguage(language), NoLanguage);
        EXPECT_TRUE(Raised<CInternalError>([this, language] { base.SetCurrentLanguage(language); })) << language;
    }
    EXPECT_TRUE(Raised<CInternalError>([this] { base.GetDefaultLanguage(); }));
    EXPECT_TRUE(Raised<CInternalError>([this] { base.AddPrefix(folder.Path(), u"late"); }));
    EXPECT_EQ(base.GetLanguageName(2), u"2");
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"(none)");
    EXPECT_EQ(Told(), u"");
}

TEST_F(ResourceBaseTest, ScansForLibrariesThatAreSome) {
    base.AddPrefix(folder.Path(), u"alpha");
    base.Initialize();
    EXPECT_EQ(Numbers(base), "2:Testish 3:Testish 11:11 70:Testish ");
    EXPECT_EQ(base.FindLanguage(11), 2U);
    EXPECT_EQ(base.FindLanguage(9), NoLanguage);
    EXPECT_EQ(base.GetLanguageName(2), u"Testish");
    EXPECT_LT(base.GetDefaultLanguage(), 70U);
    EXPECT_TRUE(IsLoaded(CUnicodeString::Format(u"alpha%u.dll", base.GetDefaultLanguage()).Text()));
    EXPECT_TRUE(Raised<CInternalError>([this] { base.SetCurrentLanguage(70); })) << "listed, and none of the table's";
    EXPECT_EQ(Told(), u"");
    // A scan lasts until the stop.
    folder.Write(u"alpha20.dll", FileBytes(TEST_LANGUAGE));
    base.Initialize();
    EXPECT_EQ(base.FindLanguage(20), NoLanguage);
    base.Deinitialize();
    base.Initialize();
    EXPECT_EQ(base.FindLanguage(20), 3U);
}

TEST_F(ResourceBaseTest, ALanguageIsOneThatEveryPrefixHas) {
    base.AddPrefix(folder.Path() + u'\\', u"alpha");
    base.AddPrefix(folder.Path(), u"beta");
    SetDebugFlag(DebugCheckAllResourceModulesExistance, true);
    base.Initialize();
    SetDebugFlag(DebugCheckAllResourceModulesExistance, false);
    EXPECT_EQ(Numbers(base), "2:Testish 3:Testish 11:Testish 70:Testish ");
    EXPECT_EQ(Told(), u"4112 For prefix 'alpha' resource modules for following languages: 12 are missing.\n|");
    base.SetCurrentLanguage(2);
    EXPECT_TRUE(IsLoaded(u"alpha2.dll") && IsLoaded(u"beta2.dll"));

    CBase other;
    other.AddPrefix(folder.Path(), u"kept");
    other.AddPrefix(folder.Path(), u"beta");
    SetDebugFlag(DebugCheckAllResourceModulesExistance, true);
    other.Initialize();
    SetDebugFlag(DebugCheckAllResourceModulesExistance, false);
    EXPECT_EQ(Told(), u"4112 For prefix 'kept' resource modules for following languages: 11, 12, 70 are missing.\n"
                      u"For prefix 'beta' resource modules for following languages: 4, 5 are missing.\n|");
}

TEST_F(ResourceBaseTest, AChosenLanguageIsLoadedOnceAndGoesWithTheNext) {
    base.AddPrefix(folder.Path(), u"kept");
    base.Initialize();
    base.SetCurrentLanguage(5);
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"%0 wurde nicht gefunden.");
    base.SetCurrentLanguage(5);
    EXPECT_TRUE(IsLoaded(u"kept5.dll"));
    base.SetCurrentLanguage(2);
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"Noop %0");
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"(none)") << "an empty text is none";
    EXPECT_FALSE(IsLoaded(u"kept5.dll"));
    EXPECT_EQ(base.FindModuleWithIcon(u"testicon"), Platform::GetModuleHandle((folder / u"kept2.dll").Text()));
    EXPECT_FALSE(base.FindModuleWithIcon(u"ABSENT"));
    base.Deinitialize();
    EXPECT_FALSE(IsLoaded(u"kept2.dll"));
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"(none)");
    EXPECT_EQ(Told(), u"");
}

TEST_F(ResourceBaseTest, ReleasedListsAreKeptUpToALimit) {
    CBase keeping(2);
    keeping.AddPrefix(folder.Path(), u"kept");
    keeping.Initialize();
    keeping.SetCurrentLanguage(2); // after these two the system's own is no longer kept
    keeping.SetCurrentLanguage(3);
    const auto loaded = [this] {
        std::string numbers;
        for (const char16_t* name : {u"kept2.dll", u"kept3.dll", u"kept4.dll", u"kept5.dll"}) {
            numbers += IsLoaded(name) ? static_cast<char>(name[4]) : '-';
        }
        return numbers;
    };
    for (const auto& [language, kept] :
         {std::pair(4U, "234-"), {2U, "234-"}, {3U, "234-"}, {4U, "234-"}, {5U, "-345"}}) {
        keeping.SetCurrentLanguage(language);
        EXPECT_EQ(loaded(), kept) << language << " and the two before it";
    }
    keeping.Deinitialize();
    EXPECT_EQ(loaded(), "----");
}

TEST_F(ResourceBaseTest, TellsWhatCannotBeLoadedOrShown) {
    base.AddPrefix(folder.Path(), u"rare");
    base.Initialize();
    base.SetCurrentLanguage(13);
    ASSERT_FALSE(base.IsLanguageSupported(12)) << "a number that is not used";
    base.SetCurrentLanguage(12);
    EXPECT_TRUE(IsLoaded(u"rare13.dll") && !IsLoaded(u"rare12.dll")) << "kept";
    const CUnicodeString unsupported =
        u"0 The selected interface language ( Testish ) is not supported on the operating system.|";
    EXPECT_EQ(Told(), unsupported);
    base.Deinitialize(); // no language is current
    base.SetCurrentLanguage(12);
    EXPECT_TRUE(IsLoaded(u"rare13.dll") && !IsLoaded(u"rare12.dll")) << "the default in its place";
    EXPECT_EQ(Told(), unsupported);

    CBase other;
    other.AddPrefix(folder.Path(), u"beta");
    other.Initialize();
    other.SetCurrentLanguage(2);
    folder.Write(u"beta3.dll", "no library any more");
    other.SetCurrentLanguage(3);
    EXPECT_FALSE(IsLoaded(u"beta2.dll")) << "the language goes without one";
    EXPECT_EQ(Told(), u"4112 Cannot load DLL " + folder.Path() + u"\\beta3.dll.\n|");
}

TEST_F(ResourceBaseTest, ALanguageGoesBeforeStaticModulesAndLaterOnesBeforeEarlier) {
    const Platform::Module german = Platform::LoadLibraryEx((folder / u"kept5.dll").Text(), 8);
    const Platform::Module program = Platform::GetProgramModule();
    ASSERT_TRUE(german);
    base.RegisterStaticModule(german);
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 ist beschädigt.");
    CArray<CUnicodeString> ofOne;
    base.GetAllMessageNames(ofOne);
    base.RegisterStaticModule(program);
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 is corrupted.");
    base.RegisterStaticModule(german);
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 ist beschädigt.") << "moved to the end";
    base.AddPrefix(folder.Path(), u"kept");
    base.Initialize();
    base.SetCurrentLanguage(2);
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"Noop %0");
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 ist beschädigt.") << "the language's is empty";
    CArray<CUnicodeString> names;
    names.Append(u"what stood there");
    base.GetAllMessageNames(names);
    EXPECT_EQ(names.Size(), ofOne.Size() + 1) << "those of all modules, each once";
    EXPECT_EQ(names[0], u"CURRENT_LANGUAGE_NAME");
    EXPECT_EQ(names[names.Size() - 1], u"ONLY_IN_TESTISH");
    base.Deinitialize();
    EXPECT_EQ(base.Text(u"ONLY_IN_TESTISH"), u"(none)");
    base.UnregisterStaticModule(german);
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 is corrupted.") << "static modules stay";
    EXPECT_TRUE(Raised<CInternalError>([&] { base.UnregisterStaticModule(german); }));
    EXPECT_TRUE(Platform::FreeLibrary(german)) << "was not owned";
}

TEST_F(ResourceBaseTest, ThreadsLookUpWhileTheLanguageChanges) {
    base.AddPrefix(folder.Path(), u"kept");
    base.Initialize();
    base.SetCurrentLanguage(2);
    OnThreads(3, [&](int thread) {
        for (std::uint32_t i = 0; i < 100; ++i) {
            const CUnicodeString text = base.Text(u"ERR_FILE_NOT_FOUND");
            EXPECT_TRUE(text == u"%0 wurde nicht gefunden." || text == u"Noop %0") << Readable(text.View());
            if (thread == 0 && i % 3 == 0) {
                base.SetCurrentLanguage(2 + i % 4);
                CArray<CUnicodeString> names;
                base.GetAllMessageNames(names);
                EXPECT_FALSE(names.IsEmpty());
            }
        }
    });
}

TEST_F(ResourceBaseTest, AThreadsOwnLanguageIsThatOfItsLookupsUpToTheStop) {
    base.AddPrefix(folder.Path(), u"kept");
    base.Initialize();
    base.SetCurrentLanguage(2);
    ThreadLanguage.Get()->inverted = ~5U;
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"(none)") << "nobody has it loaded";
    base.SetCurrentLanguage(5);
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"%0 wurde nicht gefunden.");
    CBase other;
    other.Deinitialize(); // holds no such language
    EXPECT_EQ(ThreadLanguage.Get()->inverted, 0U);
}

TEST_F(ResourceBaseTest, FoldersThatAreNone) {
    // Files in memory are found by the scan, and no system loads them.
    const CUnicodeString root = u"\\\\OSTREL\\Tessarix\\VirtualFiles$\\";
    {
        CFile file;
        file.Open(root + u"alpha2.dll", OM_Write | OM_ShareDenyWrite | OM_Create);
        file.Close();
    }
    CArray<CUnicodeString> names;
    FileSystem::GetFileNames(root, names, u"alpha*.dll");
    ASSERT_EQ(names.Size(), 1);
    CBase other;
    other.AddPrefix(root, u"alpha");
    other.Initialize();
    EXPECT_EQ(Numbers(other), "");
    FileSystem::ShutdownFileSystems();
    base.AddPrefix(folder / u"none", u"alpha");
    EXPECT_TRUE(Raised<CFileException>([this] { base.Initialize(); }));
    EXPECT_TRUE(Raised<CInternalError>([this] { base.FindLanguage(2); })) << "not initialised";
}

TEST_F(ResourceBaseTest, TheProgramSpeaksGerman) {
    ASSERT_TRUE(InitializeFoundation(nullptr, nullptr));
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x"), u"x was not found.");
    DeinitializeFoundation();
    GetResourceBase().AddPrefix(folder.Path(), u"kept");
    ASSERT_TRUE(InitializeFoundation(nullptr, nullptr));
    GetResourceBase().SetCurrentLanguage(5);
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x"), u"x wurde nicht gefunden.");
    EXPECT_EQ(GetMessageOrBuiltIn(MSG_INTERNAL_ERROR, u"built in"), u"Interner Programmfehler:\n%0, %1.");
    GetResourceBase().SetCurrentLanguage(2);
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x"), u"Noop x");
    EXPECT_EQ(FormatMessage(ERR_BAD_ARCHIVE, u"x"), u"x is corrupted.") << "the program's own text";
    DeinitializeFoundation();
    EXPECT_EQ(FormatMessage(ERR_FILE_NOT_FOUND, u"x"), u"x was not found.");
}

TEST_F(ResourceBaseTest, EveryFailureLeavesTheBaseUsable) {
    SKIP_WITHOUT_FAULTS();
    std::optional<CBase> swept;
    const auto use = [&] {
        swept->RegisterStaticModule(Platform::GetProgramModule());
        swept->AddPrefix(folder.Path(), u"kept");
        swept->Initialize();
        for (const std::uint32_t language : {2U, 5U, 2U}) {
            swept->SetCurrentLanguage(language);
            swept->Text(u"ERR_FILE_NOT_FOUND");
        }
        CArray<CUnicodeString> names;
        swept->GetAllMessageNames(names);
    };
    const auto check = [&](std::int32_t nth) {
        swept->Deinitialize();
        swept->Initialize();
        if (swept->FindLanguage(5) != NoLanguage) { // otherwise not even the prefix came in
            swept->SetCurrentLanguage(5);
            EXPECT_EQ(swept->Text(u"ERR_FILE_NOT_FOUND"), u"%0 wurde nicht gefunden.") << nth;
            swept->Deinitialize();
            EXPECT_FALSE(IsLoaded(u"kept2.dll") || IsLoaded(u"kept5.dll")) << nth;
        }
    };
    for (const char* function : {"allocation", "*"}) {
        const auto prepare = [&](std::int32_t) { swept.emplace(1); };
        EXPECT_GT(FailEachCall(function, 8, Platform::FaultMode::Once, prepare, use, check), 20) << function;
    }
}
