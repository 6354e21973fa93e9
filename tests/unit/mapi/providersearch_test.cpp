// The search for a MAPI library as it is seen from outside: a folder with copies of the noting library, a registry of
// the test's own, an installer that answers what it is told to, and what the libraries noted.
#include "mapi/ProviderSearch.h"

#include "foundation/inc/filesystem.h"
#include "mapi/MapiEntries.h"
#include "mapi/MapiProvider.h"
#include "platform/inc/installer.h"
#include "platform/inc/modules.h"
#include "platform/inc/process.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>

using namespace Mapi;
using Platform::RegDword;
using Platform::RegExpandSz;
using Platform::RegMultiSz;
using Platform::RegSz;

namespace {

constexpr std::uint32_t User = Platform::HkeyCurrentUser;
constexpr std::uint32_t Machine = Platform::HkeyLocalMachine;
using Paths = std::vector<const char16_t*>;

const std::string Library = [] {
    std::ifstream file(TestFilePlace(NOTING_PROVIDER), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}();

void SetVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

std::string Lower(std::u16string_view text) {
    std::string narrow(text.begin(), text.end());
    std::transform(narrow.begin(), narrow.end(), narrow.begin(), [](char c) { return std::tolower(c); });
    return narrow;
}

/// One value. In its text `{R}` is the test's folder and `|` ends a string of several.
struct Value {
    std::uint32_t root;
    const char16_t* key;
    const char16_t* name;
    std::uint32_t type;
    std::u16string text;
};

Value Number(const char16_t* key, const char16_t* name, std::int32_t number, std::uint32_t root = User) {
    return {root, key, name, RegDword, {static_cast<char16_t>(number), 0}};
}

/// What the installer is asked, and what it does then.
std::function<std::uint32_t(const std::string& question, std::u16string& path)> installer;

class CFixture {
public:
    explicit CFixture(const std::vector<Value>& values = {}, const Paths& libraries = {})
        : root((folder / u"").Text()) {
        std::filesystem::create_directories(TestFilePlace(u"../lib/corvane"));
        std::ofstream(TestFilePlace(u"../lib/corvane/mapi32.dll"), std::ios::binary) << Library;
        folder.Write(u"notes", "");
        SetVariable("TESSARIX_REGISTRY", folder.Place() / "registry");
        SetVariable("PROVIDER_NOTES", folder.Place() / "notes");
        SetVariable("PROVIDER_ROOT", folder.Place());
        SetVariable("PROVIDER_COMPONENT", "");
        SetVariable("LC_ALL", "C");
        Set(values);
        std::for_each(libraries.begin(), libraries.end(), [this](const auto* name) { Make(name); });
    }
    ~CFixture() { installer = nullptr; }
    CFixture(const CFixture&) = delete;
    CFixture& operator=(const CFixture&) = delete;

    std::u16string Whole(const char16_t* name) const { return root + name; }
    void Make(const char16_t* name) const { folder.Write(name, Library); }

    void Set(const std::vector<Value>& values) const {
        for (const Value& value : values) {
            Platform::RegistryKey key = nullptr;
            Platform::RegCreateKeyEx(Platform::RootKey(value.root), value.key, 0, Platform::KeyReadWrite, key);
            std::u16string text = value.text.starts_with(u"{R}\\") ? root + value.text.substr(4) : value.text;
            std::replace(text.begin(), text.end(), u'|', u'\0');
            const std::size_t length = text.size() + (value.type == RegDword ? 0 : 1);
            EXPECT_EQ(Platform::RegSetValueEx(key, value.name, value.type, text.c_str(),
                                              static_cast<std::uint32_t>(length * sizeof(char16_t))),
                      0U);
            Platform::RegCloseKey(key);
        }
    }

    /// In lower case, with short names of folders.
    std::string Short(std::u16string_view paths) const {
        char16_t system[1000] = {};
        Platform::GetSystemDirectory(system, 1000);
        std::string text = Lower(paths);
        for (const auto& [whole, brief] : {std::pair{Lower(root), ""}, {Lower(system), "system"}}) {
            for (std::size_t at = 0; (at = text.find(whole)) != std::string::npos;) {
                text.replace(at, whole.size(), brief);
            }
        }
        return text;
    }
    std::string Notes() const {
        const std::string notes = folder.Content(u"notes");
        return Short(std::u16string(notes.begin(), notes.end()));
    }

    /// The path of what a search gave, which is unloaded, or the last error.
    std::string Take(Platform::Module module) const {
        if (!module) {
            return std::to_string(Platform::GetLastError());
        }
        std::string path = Short(Tsx::FileSystem::GetModulePath(module).View());
        Platform::FreeLibrary(module);
        return path;
    }

private:
    CTestFolder folder;
    std::u16string root;
};

constexpr const char16_t* Mail = u"Software\\Clients\\Mail";
constexpr const char16_t* Client = u"Software\\Clients\\Mail\\Client";
constexpr const char16_t* Outlook = u"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const char16_t* Windows = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr const char16_t* AppPath = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\OUTLOOK.EXE";

const Value DefaultClient{Machine, Mail, u"", RegSz, u"Client"};
const Value ClientPathEx{Machine, Client, u"DllPathEx", RegSz, u"{R}\\Client\\ex.dll"};
const Value ClientPath{Machine, Client, u"DllPath", RegSz, u"{R}\\Client\\plain.dll"};
const Value ClientComponent{Machine, Client, u"MSIComponentID", RegSz, u"{Id}"};
const Value ClientLanguage{Machine, Client, u"MSIApplicationLCID", RegSz, u"1031"};
const Value OutlookProgram{Machine, AppPath, u"", RegSz, u"{R}\\Office\\OUTLOOK.EXE"};
const Value OutlookComponent{User, Outlook, u"MSIComponentID", RegSz, u"{Id}"};
const Value Common{Machine, Windows, u"CommonFilesDir", RegSz, u"{R}\\Common"};
const Value GermanPlace{User, Outlook, u"MSIApplicationLCID", RegMultiSz, u"Lang|Id|"};
const Value German = Number(u"Software\\Lang", u"Id", 1031);

} // namespace

// In the place of the layer's own, which a program links only if it has none.
std::uint32_t Platform::MsiProvideQualifiedComponent(const char16_t* component, const char16_t* qualifier,
                                                     std::uint32_t mode, char16_t* path, std::uint32_t& size) {
    std::u16string answer;
    EXPECT_TRUE(mode == 0xFFFFFFFF && size == 520);
    const std::uint32_t result =
        installer ? installer(Lower(component) + " " + Lower(qualifier), answer) : Platform::ErrorUnknownComponent;
    *std::copy(answer.begin(), answer.end(), path) = u'\0';
    size = static_cast<std::uint32_t>(answer.size());
    return result;
}

TEST(ProviderSearch, TakesTheFirstOfTheAttemptsInOrder) {
    const Paths client = {u"Client\\ex.dll", u"Client\\plain.dll", u"Office\\olmapi32.dll"};
    const Paths common = {u"Common\\System\\MSMAPI\\1031\\MSMAPI32.DLL", u"Common\\System\\MSMAPI\\1033\\MSMAPI32.DLL"};
    const std::string asked = "load system\\mapi32.dll\ncomponent {id} 1031 260 0\nunload system\\mapi32.dll\n";
    const std::string english = "common\\system\\msmapi\\1033\\msmapi32.dll";
    const struct {
        const char* name;
        Paths files;
        std::vector<Value> values;
        std::string result;
        std::string notes = {}; // the first
        const char16_t* component = u"";
    } rows[] = {
        // clang-format off
        {"component", client, {DefaultClient, ClientPathEx, ClientComponent, ClientLanguage}, "office\\olmapi32.dll",
            asked, u"Office\\olmapi32.dll"},
        {"unknown component, first path", client, {DefaultClient, ClientPathEx, ClientPath, ClientComponent,
            ClientLanguage, OutlookProgram}, "client\\ex.dll", asked},
        {"component without language", client, {DefaultClient, ClientPathEx, ClientComponent}, "client\\ex.dll"},
        {"nothing is known", {}, {}, "system\\mapi32.dll"},
        {"first path leads nowhere", {u"Client\\plain.dll"}, {DefaultClient, ClientPathEx, ClientPath},
            "client\\plain.dll"},
        {"path with a variable", client, {DefaultClient, {Machine, Client, u"DllPathEx", RegExpandSz,
            u"%PROVIDER_ROOT%\\Client\\ex.dll"}}, "client\\ex.dll"},
        {"path of no text type", client, {DefaultClient, ClientPath, {Machine, Client, u"DllPathEx", RegMultiSz,
            u"{R}\\Client\\ex.dll"}}, "client\\plain.dll"},
        {"name of the client of another type", client, {{Machine, Mail, u"", RegExpandSz, u"Client"}, ClientPathEx,
            OutlookProgram}, "office\\olmapi32.dll"},
        {"Outlook is the default client", client, {{Machine, Mail, u"", RegSz, u"Microsoft Outlook"}, {Machine,
            Outlook, u"DllPathEx", RegSz, u"{R}\\Client\\ex.dll"}, OutlookProgram}, "office\\olmapi32.dll"},
        {"Outlook's program of another type", client, {{Machine, AppPath, u"", RegExpandSz,
            u"{R}\\Office\\OUTLOOK.EXE"}}, "none"},
        {"Outlook's program unreadable", client, {{Machine, AppPath, u"", RegSz, std::u16string(270, u'x')}}, "none"},
        {"Outlook's folder without library", {}, {OutlookProgram, Common}, "system\\mapi32.dll"},
        {"a folder has the library's name", {u"Office\\olmapi32.dll\\x", common[0], common[1]}, {OutlookProgram, Common,
            GermanPlace, German}, "common\\system\\msmapi\\1031\\msmapi32.dll"},
        {"no language of Outlook's", common, {OutlookProgram, Common}, english},
        {"no library in the language", {common[1]}, {OutlookProgram, Common, GermanPlace, German}, english},
        {"separator at the end", common, {OutlookProgram, {Machine, Windows, u"CommonFilesDir", RegExpandSz,
            u"%PROVIDER_ROOT%\\Common\\"}}, english},
        {"beside a file", {u"Common\\file", common[1]}, {OutlookProgram, {Machine, Windows, u"CommonFilesDir", RegSz,
            u"{R}\\Common\\file"}}, english},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CFixture fixture(row.values, row.files);
        SetVariable("PROVIDER_COMPONENT", *row.component ? Lower(fixture.Whole(row.component)) : "");
        const Platform::Module module = LoadMapiProvider();
        EXPECT_EQ(module ? fixture.Take(module) : "none", row.result);
        EXPECT_TRUE(fixture.Notes().starts_with(row.notes)) << fixture.Notes();
        EXPECT_EQ(Platform::LoadLibraryEx(u"olmapi32.dll", 0), nullptr) << "Outlook's folder is searched no more";
    }
    const CFixture fixture({DefaultClient, ClientPathEx}, client);
    outlookOnly = true;
    EXPECT_EQ(LoadMapiProvider(), nullptr);
    fixture.Set({OutlookProgram});
    Platform::SetErrorMode(Platform::SemFailCriticalErrors);
    EXPECT_EQ(fixture.Take(LoadMapiProvider()), "office\\olmapi32.dll");
    EXPECT_EQ(Platform::SetErrorMode(0), 0U);
    outlookOnly = false;
    fixture.Set({{Machine, Mail, u"", RegSz, u"Gone"}});
    Platform::ArmFault("SetDllDirectory", 1, Platform::ErrorAccessDenied, Platform::FaultMode::Once);
    EXPECT_TRUE(!Platform::FaultsAvailable() || !LoadMapiProvider()) << "and no other library is tried";
    Platform::DisarmFaults();
    const std::filesystem::path system = TestFilePlace(u"../lib/corvane");
    std::filesystem::rename(system / "mapi32.dll", system / "mapistub.dll");
    fixture.Set({DefaultClient, ClientComponent, ClientLanguage});
    EXPECT_EQ(fixture.Take(LoadMapiProvider()), "client\\ex.dll");
    EXPECT_NE(fixture.Notes().find("load system\\mapistub.dll\ncomponent {id}"), std::string::npos);
    std::filesystem::remove(system / "mapistub.dll");
}

TEST(ProviderSearch, AsksTheInstallerForEachLanguage) {
    // Which question is answered, from 1; all questions and what is found then.
    const auto search = [](const std::vector<Value>& values, int answered, bool bringsProvider = false) {
        const CFixture fixture(values, {u"Office\\beside.dll"});
        fixture.Set({OutlookProgram, German});
        std::string told;
        installer = [&](const std::string& question, std::u16string& path) {
            told += question + ", ";
            EXPECT_EQ(fixture.Take(Platform::LoadLibraryEx(u"beside.dll", 0)), "office\\beside.dll");
            if (--answered != 0) {
                return Platform::ErrorUnknownComponent;
            }
            path = fixture.Whole(u"component.dll");
            fixture.Make(u"component.dll");
            fixture.Make(bringsProvider ? u"Office\\olmapi32.dll" : u"other.dll");
            return Platform::ErrorSuccess;
        };
        told += fixture.Take(LoadMapiProvider());
        return told + (bringsProvider ? " " + fixture.Take(Platform::GetModuleHandle(u"component.dll")) : "");
    };
    const Value ofMachine{Machine, Outlook, u"MSIComponentID", RegSz, u"{Id}"};
    const std::string first = "{id} 1031\\nt, {id} 1033\\nt, {id} 1033\\nt, {id} 1033\\nt, {id} 1031, {id} 1033, ";
    EXPECT_EQ(search({OutlookComponent, GermanPlace}, 6), first + "component.dll");
    EXPECT_EQ(search({OutlookComponent, GermanPlace}, 9), first + "{id} 1033, {id} 1033, system\\mapi32.dll");
    EXPECT_EQ(search({ofMachine}, 1), "{id} 1033\\nt, component.dll") << "the machine's key without the user's";
    EXPECT_EQ(search({GermanPlace, ofMachine}, 1), "system\\mapi32.dll") << "the user's key has no component";
    EXPECT_EQ(search({{User, Outlook, u"MSIComponentID", RegSz, std::u16string(42, u'x')}}, 1), "system\\mapi32.dll");
    EXPECT_EQ(search({OutlookComponent}, 1, true), "{id} 1033\\nt, office\\olmapi32.dll component.dll")
        << "still loaded";
}

TEST(ProviderSearch, LeavesTheReasonInTheLastError) {
    const CFixture fixture({}, {u"there.dll", u"elsewhere\\there.dll"});
    const auto ask = [&fixture](const char16_t* answer, std::uint32_t result) {
        installer = [&](const std::string&, std::u16string& path) {
            path = fixture.Whole(answer);
            return result;
        };
        return fixture.Take(LoadQualifiedComponent(u"{Id}", u"1033"));
    };
    EXPECT_EQ(ask(u"", 1607), "1607");
    EXPECT_EQ(ask(u"elsewhere", 0), "2");
    const Platform::Module loaded = Platform::LoadLibraryEx(fixture.Whole(u"there.dll").c_str(), 0);
    EXPECT_EQ(ask(u"elsewhere\\there.dll", 0), "there.dll") << "the process has one already";
    Platform::FreeLibrary(loaded);
    const auto look = [&fixture](std::uint32_t type, const std::u16string& folder, const char16_t* path = u"x.dll") {
        fixture.Set({{Machine, Windows, u"CommonFilesDir", type, folder}});
        return fixture.Take(LoadUnderCommonFiles(path));
    };
    const std::u16string tooLong(260, u'x');
    EXPECT_EQ(fixture.Take(LoadUnderCommonFiles(u"x.dll")), "2") << "no key";
    EXPECT_EQ(look(RegMultiSz, u"{R}\\|"), "87");
    EXPECT_EQ(look(RegExpandSz, u"%PROVIDER_ROOT%" + tooLong.substr(20)), "122");
    EXPECT_EQ(look(RegSz, u"{R}\\gone"), "2");
    EXPECT_EQ(look(RegSz, u"{R}\\elsewhere", tooLong.c_str()), "122");
    EXPECT_EQ(look(RegSz, u"{R}\\elsewhere"), "126");
    EXPECT_EQ(look(RegSz, u"{R}\\elsewhere", u"\\there.dll"), "elsewhere\\there.dll");
}

TEST(ProviderSearch, ReadsOutlooksLanguage) {
    constexpr const char16_t* policy = u"Software\\Policy\\Lang";
    constexpr const char16_t* software = u"Software\\Lang";
    constexpr const char16_t* names[] = {u"a", u"b", u"c", u"d"};
    // A letter sets a place: a and b the user's application and office, c and d the machine's. With p or s before it
    // and a number behind it, it sets the number of that place in the policy or the software.
    const auto read = [&](const std::string& text, const std::vector<Value>& others = {}) {
        const CFixture fixture(others);
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            const int place = (word.size() == 1 ? word[0] : word[1]) - 'a';
            const char16_t* const value = place % 2 == 0 ? u"MSIApplicationLCID" : u"MSIOfficeLCID";
            fixture.Set({word.size() == 1 ? Value{place < 2 ? User : Machine, Outlook, value, RegMultiSz,
                                                  std::u16string(u"Lang|") + names[place] + u"|"}
                                          : Number(word[0] == 'p' ? policy : software, names[place], word[2] - '0')});
        }
        return ReadOutlookLcid();
    };
    EXPECT_EQ(read(""), 0U);
    EXPECT_EQ(read("a pa1 sa2"), 1U) << "for the user the policy comes first";
    EXPECT_EQ(read("c pc1 sc2"), 2U) << "and the software for the machine";
    EXPECT_EQ(read("a b sb4"), 4U) << "the first place has no number";
    EXPECT_EQ(read("a pa0 sa8"), 0U) << "a zero ends it";
    EXPECT_EQ(read("d", {Number(software, u"d", 5, Machine)}), 0U) << "the number must be the user's";
    EXPECT_EQ(read("a sa6", {{User, policy, u"a", RegSz, u"x"}}), 6U);
    EXPECT_EQ(read("b sb7", {{User, Outlook, u"MSIApplicationLCID", RegSz, u"Lang"}}), 7U);
}

TEST(MapiProvider, WhatTheProcessHasIsUsedWithoutASearch) {
    const CFixture fixture({DefaultClient, ClientPathEx}, {u"msmapi32.dll", u"olmapi32.dll", u"Client\\ex.dll"});
    const std::uint32_t generation = providerGeneration;
    const auto locate = [&fixture] {
        const Platform::Module first = LocateMapiModule();
        return first == LocateMapiModule() ? fixture.Take(providerModule.exchange(nullptr)) : "two";
    };
    const Platform::Module second = Platform::LoadLibraryEx(fixture.Whole(u"msmapi32.dll").c_str(), 0);
    EXPECT_EQ(locate(), "msmapi32.dll");
    EXPECT_EQ(providerGeneration, generation + 1) << "set once";
    const Platform::Module first = Platform::LoadLibraryEx(fixture.Whole(u"olmapi32.dll").c_str(), 0);
    EXPECT_EQ(locate(), "olmapi32.dll");
    Platform::FreeLibrary(first);
    Platform::FreeLibrary(second);
    EXPECT_EQ(locate(), "client\\ex.dll") << "none counted too often";
}

TEST(MapiProvider, OneOfSeveralThreadsSetsIt) {
    const CFixture fixture({OutlookProgram, OutlookComponent}, {u"component.dll"});
    const std::uint32_t generation = providerGeneration;
    std::atomic<int> searching{4};
    installer = [&](const std::string&, std::u16string& path) {
        for (--searching; searching > 0;) {
            std::this_thread::yield(); // until all of them are in the midst of their search
        }
        path = fixture.Whole(u"component.dll");
        return 0U;
    };
    OnThreads(4, [](int) { EXPECT_EQ(LocateMapiModule(), providerModule); });
    EXPECT_EQ(providerGeneration, generation + 4);
    fixture.Take(providerModule.exchange(nullptr));
    EXPECT_EQ(Platform::GetModuleHandle(u"component.dll"), nullptr) << "what was loaded in vain is given back";
}

TEST(MapiEntries, AreBoundWhenCalledAndAgainForANewLibrary) {
    const CFixture fixture({Number(AppPath, u"", 0, Machine)}, {u"Client\\ex.dll", u"Client\\plain.dll"});
    const auto call = [] {
        const auto initialized = static_cast<std::uint32_t>(MAPIInitialize(nullptr));
        FreeProws(nullptr);
        return std::to_string(initialized) + ' ' + std::to_string(MAPIFreeBuffer(nullptr));
    };
    EXPECT_EQ(call(), "2147500037 0") << "E_FAIL and nothing: Outlook's entry, a number, ends every search";
    fixture.Set({DefaultClient});
    for (const Value& value : {ClientPath, ClientPathEx}) {
        fixture.Set({value});
        EXPECT_EQ(call(), "77 77");
        EXPECT_TRUE(fixture.Notes().ends_with("mapifreebuffer 0\n")) << fixture.Notes();
        fixture.Take(providerModule.exchange(nullptr)); // with its entries: a call of one would not end well
    }
    fixture.Set({{Machine, Mail, u"", RegSz, u"Gone"}});
    EXPECT_EQ(call(), "2147500037 0");
}
