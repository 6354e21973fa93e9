#include "foundation/inc/resourceinfo.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/messagenames.h"
#include "foundation/src/languagetable.h"
#include "foundation/src/statics.h"
#include "platform/inc/faults.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <fstream>
#include <optional>
#include <tuple>

using namespace Tsx;
using namespace std::string_view_literals;

namespace {

/// A resource base beside the program's own, over the libraries of some prefixes in a folder.
class CBase : public CResourceBase {
public:
    explicit CBase(std::int32_t kept = 0) : CResourceBase(kept) {}
    CBase(const CTestFolder& folder, std::initializer_list<const char16_t*> known, std::int32_t kept = 0)
        : CResourceBase(kept) {
        for (const char16_t* prefix : known) {
            AddPrefix(folder.Path(), prefix);
        }
        Initialize();
    }
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

/// Puts a text in the place of one of the same length, wherever that stands: code may have it too.
template <class TText>
std::string Patched(std::string bytes, TText from, TText to) {
    const auto raw = [](TText text) {
        return std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(text[0]));
    };
    for (std::size_t at = bytes.find(raw(from)); at != std::string::npos; at = bytes.find(raw(from), at)) {
        bytes.replace(at, raw(to).size(), raw(to));
    }
    return bytes;
}

class ResourceBaseTest : public testing::Test {
protected:
    const CTestFolder folder; // with libraries of all kinds
    CRecordingHandler handler;
    const CMessageHandlerScope scope{&handler};

    ResourceBaseTest() {
        const std::string good = FileBytes(TEST_LANGUAGE);
        for (const char16_t* name :
             {u"alpha2.dll", u"alpha128.dll", u"alpha5x.dll", u"alpha.dll", u"alpha 6.dll", u"alpha-1.dll",
              u"alphabet.dll", u"alpha70.dll", u"alpha3.txt", u"beta2.dll", u"beta3.dll", u"beta12.dll", u"beta70.dll",
              u"kept2.dll", u"kept3.dll", u"kept4.dll", u"rare12.dll", u"rare13.dll"}) {
            folder.Write(name, good);
        }
        folder.Write(u"alpha3.dll", Patched(good, u"Resource DLL"sv, u"resource dll"sv));
        // Of a name that is not found any more, all that is left is a library without a table.
        folder.Write(u"alpha11.dll", Patched(good, "GetResourceID"sv, "GetResourceXY"sv));
        folder.Write(u"alpha9.dll", Patched(good, u"Resource DLL"sv, u"Resource EXE"sv));
        folder.Write(u"alpha4.dll", std::string("\x7F") + "ELF\x02\x01\x01" + std::string(60, '\xFF'));
        folder.Write(u"alpha14.dll\\a file", "in a folder that has a library's name");
        folder.Write(u"kept5.dll", FileBytes(GERMAN_LANGUAGE));
    }
    /// The libraries in the folder that are loaded, without the end of their names.
    std::u16string Loaded() const {
        std::u16string names;
        for (const std::u16string name : {u"beta2", u"kept2", u"kept3", u"kept4", u"kept5", u"rare12", u"rare13"}) {
            names += Platform::GetModuleHandle((folder / (name + u".dll").c_str()).Text()) ? name + u' ' : u"";
        }
        return names;
    }
};

/// The numbers that are known, each with its name.
std::string Numbers(CBase& base) {
    std::string text;
    for (std::uint32_t language = 0; language < 130; ++language) {
        if (base.FindLanguage(language) != NoLanguage) {
            text += std::to_string(language) + ":" + Readable(base.GetLanguageName(language).View()) + " ";
        }
    }
    return text;
}

} // namespace

TEST(LanguageTable, TheDefaultFitsTheSystemBest) {
    // A bit for each language: those known and those not supported; the system's language and code page; the choice.
    for (const auto& [name, known, unsupported, system, codePage, expected] :
         {std::tuple("the primary language", 0xEU, 0U, 0x080CU, 1251U, 3U),
          {"the first of two with the primary language", 1 << 27 | 1 << 13, 0, 0x0816, 0, 13},
          {"the code page", 0x70001, 0, 0x0509, 1250, 16},
          {"the first supported one", 0x4010080, 0x80, 0x0436, 874, 16},
          {"a fitting one that is not supported", 0xC, 0x8, 0x040C, 0, 2},
          {"none is supported", 0x4000028, 0x4000028, 0x040C, 1252, 3},
          {"none at all", 0, 0, 0x0409, 1252, NoLanguage}}) {
        EXPECT_EQ(ChooseDefaultLanguage(known, ~CLanguageSet(unsupported), system, codePage), expected) << name;
    }
}

// Libraries are named by the numbers, so that two rows in each other's place show people a language that they did not
// choose. The identifiers are those of Windows, the code pages the ones that it gives their languages.
TEST(LanguageTable, NumbersStandForTheirLanguages) {
    CUnicodeString found;
    for (std::uint32_t language = 0; language < LanguageCount; ++language) {
        const std::uint32_t id = GetLanguageId(LanguageTable[language]);
        found += id == 0 ? u"" : CUnicodeString::Format(u"%u:%x/%u ", language, id, LanguageTable[language].codePage);
    }
    EXPECT_EQ(found, u"0:409/0 1:419/1251 2:407/1252 3:40c/1252 4:422/1251 5:40a/1252 6:410/1252 7:413/1252 8:406/1252 "
                     u"9:41d/1252 10:40b/1252 11:414/1252 13:816/1252 14:41b/1250 15:415/1250 16:405/1250 17:40e/1250 "
                     u"18:427/1257 19:426/1257 20:425/1257 21:40f/1252 22:408/1253 23:402/1251 24:41f/1254 25:444/0 "
                     u"26:411/0 27:416/1252 28:813/1252 29:40d/1255 34:439/0 35:c1a/1251 36:41a/1250 37:418/1250 "
                     u"38:424/1250 39:403/1252 40:42f/1251 42:43f/1251 43:81a/1250 62:42a/1258 63:412/0 64:804/0 "
                     u"65:404/0 69:41e/0 ");
}

TEST_F(ResourceBaseTest, ScansForLibrariesThatAreSome) {
    CBase base;
    EXPECT_TRUE(Raised<CInternalError>([&] { base.FindLanguage(0); })) << "too early";
    base.AddPrefix(folder.Path() + u'\\', u"alpha");
    base.Initialize();
    EXPECT_EQ(Numbers(base), "2:Testish 3:Testish 11:11 70:Testish ");
    EXPECT_EQ(base.FindLanguage(11), 2U);
    EXPECT_LT(base.GetDefaultLanguage(), 70U) << "which is listed, and none of the table's";
    ExpectRefused({[&] { base.SetCurrentLanguage(12); }, [&] { base.AddPrefix(folder.Path(), u"late"); }});
    folder.Write(u"alpha20.dll", FileBytes(TEST_LANGUAGE));
    base.Initialize();
    EXPECT_EQ(base.FindLanguage(20), NoLanguage) << "a scan lasts until the stop";
    base.Deinitialize();
    base.Initialize();
    EXPECT_EQ(base.FindLanguage(20), 3U);

    CBase none;
    none.Initialize();
    EXPECT_EQ(Numbers(none), "") << "without prefixes there is nothing to choose";
}

TEST_F(ResourceBaseTest, ALanguageIsOneThatEveryPrefixHas) {
    SetDebugFlag(DebugCheckAllResourceModulesExistance, true);
    CBase base(folder, {u"kept", u"beta"});
    SetDebugFlag(DebugCheckAllResourceModulesExistance, false);
    EXPECT_EQ(Numbers(base), "2:Testish 3:Testish ");
    EXPECT_EQ(handler.boxes.back(),
              u"Tessarix: For prefix 'kept' resource modules for following languages: 12, 70 are missing.\n"
              u"For prefix 'beta' resource modules for following languages: 4, 5 are missing.\n 1010");
    base.SetCurrentLanguage(2);
    EXPECT_EQ(Loaded(), u"beta2 kept2 ");
    folder.Write(u"beta3.dll", "no library any more");
    base.SetCurrentLanguage(3);
    EXPECT_EQ(handler.boxes.back(), u"Tessarix: Cannot load DLL " + folder.Path() + u"\\beta3.dll.\n 1010");
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"Noop %0") << "the language goes without it";
}

TEST_F(ResourceBaseTest, AChosenLanguageIsLoadedOnceAndReleasedListsAreKeptUpToALimit) {
    CBase base(folder, {u"kept"});
    for (const auto& [language, loaded, text] : {std::tuple(5U, u"kept5 ", u"%0 wurde nicht gefunden."),
                                                 {5U, u"kept5 ", u"%0 wurde nicht gefunden."},
                                                 {2U, u"kept2 ", u"Noop %0"}}) {
        base.SetCurrentLanguage(language);
        EXPECT_EQ(Loaded(), loaded);
        EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), text);
    }
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"(none)") << "an empty text is none";
    EXPECT_EQ(base.FindModuleWithIcon(u"testicon"), Platform::GetModuleHandle((folder / u"kept2.dll").Text()));
    EXPECT_FALSE(base.FindModuleWithIcon(u"ABSENT"));
    base.Deinitialize();
    EXPECT_EQ(Loaded(), u"");
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"(none)");

    CBase keeping(folder, {u"kept"}, 2);
    keeping.SetCurrentLanguage(2); // after these two the system's own is no longer kept
    keeping.SetCurrentLanguage(3);
    for (const auto& [language, kept] :
         {std::pair(4U, u"kept2 kept3 kept4 "), {2U, u"kept2 kept3 kept4 "}, {5U, u"kept2 kept4 kept5 "}}) {
        keeping.SetCurrentLanguage(language);
        EXPECT_EQ(Loaded(), kept) << language << " and the two before it";
    }
    keeping.Deinitialize();
    EXPECT_EQ(Loaded(), u"");
}

TEST_F(ResourceBaseTest, TellsWhatCannotBeShown) {
    CBase base(folder, {u"rare"});
    base.SetCurrentLanguage(13);
    for (const bool hasLanguage : {true, false}) {
        base.SetCurrentLanguage(12); // a number that is not used
        EXPECT_EQ(Loaded(), u"rare13 ") << (hasLanguage ? "kept" : "the default in its place");
        EXPECT_EQ(handler.boxes.back(),
                  u"Tessarix: The selected interface language ( Testish ) is not supported on the "
                  u"operating system. 0");
        handler.boxes.clear();
        base.Deinitialize();
    }
}

TEST_F(ResourceBaseTest, ALanguageGoesBeforeStaticModulesAndLaterOnesBeforeEarlier) {
    CBase base;
    const Platform::Module german = Platform::LoadLibraryEx((folder / u"kept5.dll").Text(), 8);
    const Platform::Module program = Platform::GetProgramModule();
    for (const auto& [module, text] : {std::pair(german, u"%0 ist beschädigt."),
                                       {program, u"%0 is corrupted."},
                                       {german, u"%0 ist beschädigt."}}) { // moved to the end
        base.RegisterStaticModule(module);
        EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), text);
    }
    base.AddPrefix(folder.Path(), u"kept");
    base.Initialize();
    base.SetCurrentLanguage(2);
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"Noop %0");
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 ist beschädigt.") << "the language's is empty";
    CArray<CUnicodeString> names;
    names.Append(u"what stood there");
    base.GetAllMessageNames(names);
    const auto disordered = [](const CUnicodeString& a, const CUnicodeString& b) { return !(a < b); };
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end(), disordered), names.end()) << "in order, and each once";
    EXPECT_EQ(names[names.Size() - 1], u"ONLY_IN_TESTISH");
    base.Deinitialize();
    EXPECT_EQ(base.Text(u"ONLY_IN_TESTISH"), u"(none)");
    base.UnregisterStaticModule(german);
    EXPECT_EQ(base.Text(u"ERR_BAD_ARCHIVE"), u"%0 is corrupted.") << "static modules stay";
    EXPECT_TRUE(Platform::FreeLibrary(german)) << "was not owned";
}

TEST_F(ResourceBaseTest, ThreadsLookUpWhileTheLanguageChanges) {
    CBase base(folder, {u"kept"});
    base.SetCurrentLanguage(2);
    ThreadLanguage.Get()->inverted = ~5U;
    EXPECT_EQ(base.Text(u"ERR_FILE_NOT_FOUND"), u"(none)") << "a thread's own is that of its look-ups";
    CBase().Deinitialize(); // holds no such language
    EXPECT_EQ(ThreadLanguage.Get()->inverted, 0U);
    OnThreads(3, [&](int thread) {
        for (std::uint32_t i = 0; i < 100; ++i) {
            const CUnicodeString text = base.Text(u"ERR_FILE_NOT_FOUND");
            EXPECT_TRUE(text == u"%0 wurde nicht gefunden." || text == u"Noop %0") << Readable(text.View());
            if (thread == 0 && i % 3 == 0) {
                base.SetCurrentLanguage(2 + i % 4);
            }
        }
    });
}

TEST_F(ResourceBaseTest, EveryFailureLeavesNothingLoaded) {
    SKIP_WITHOUT_FAULTS();
    std::optional<CBase> swept;
    const auto use = [&] {
        swept->RegisterStaticModule(Platform::GetProgramModule());
        swept->AddPrefix(folder.Path(), u"kept");
        swept->Initialize();
        for (const std::uint32_t language : {2U, 5U, 2U}) {
            swept->SetCurrentLanguage(language);
        }
    };
    const auto check = [&](std::int32_t nth) {
        swept->Deinitialize();
        EXPECT_EQ(Loaded(), u"") << nth;
        swept->Initialize();
    };
    for (const char* function : {"allocation", "*"}) {
        const auto prepare = [&](std::int32_t) { swept.emplace(1); };
        EXPECT_GT(FailEachCall(function, 8, Platform::FaultMode::Once, prepare, use, check), 20) << function;
    }
}
