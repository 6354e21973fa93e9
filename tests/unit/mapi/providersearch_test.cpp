#include "mapi/ProviderSearch.h"

#include "mapi/MapiEntries.h"
#include "mapi/MapiProvider.h"
#include "platform/inc/installer.h"
#include "tests/unit/mapi/providerfixture.h"
#include <atomic>
#include <bit>
#include <functional>
#include <thread>

using namespace Mapi;
using Platform::RegDword;
using Platform::RegExpandSz;
using Platform::RegMultiSz;
using Platform::RegSz;

namespace {

/// What the installer is asked, and what it does then.
std::function<std::uint32_t(const std::string& question, std::u16string& path)> installer;

} // namespace

// In the place of the layer's own, which a program links only if it has none.
std::uint32_t Platform::MsiProvideQualifiedComponent(const char16_t* component, const char16_t* qualifier,
                                                     std::uint32_t mode, char16_t* path, std::uint32_t& size) {
    std::u16string answer;
    EXPECT_EQ(mode, 0xFFFFFFFFU);
    EXPECT_EQ(size, 520U);
    const std::uint32_t result =
        installer ? installer(Lower(component) + " " + Lower(qualifier), answer) : Platform::ErrorUnknownComponent;
    *std::copy(answer.begin(), answer.end(), path) = u'\0';
    size = static_cast<std::uint32_t>(answer.size());
    return result;
}

namespace {

// Who is asked for the path of a component: a library of the name in the program's folder, or, through the one that
// Windows has itself, the client's.
#ifdef _WIN32
const std::string ComponentLibrary = "client\\ex.dll";
#else
const std::string ComponentLibrary = "program\\mapi32.dll";
#endif

struct Row {
    const char* name;
    std::vector<const char16_t*> files;
    std::vector<Value> values;
    std::string result;
    std::vector<std::string> notes = {}; // of what came before the result was loaded
    const char16_t* component = u"";
};

/// The fixture of a row, the search, and what was seen of it.
void Try(const Row& row, Platform::Module (*search)() = LoadMapiProvider) {
    SCOPED_TRACE(row.name);
    const CFixture fixture;
    for (const char16_t* file : row.files) {
        fixture.Make(file);
    }
    if (ComponentLibrary.starts_with("program")) {
        fixture.Make(u"program\\mapi32.dll");
    }
    for (const Value& value : row.values) {
        fixture.Set(value);
    }
    SetVariable("PROVIDER_COMPONENT", *row.component ? Lower(fixture.Whole(row.component)) : "");
    EXPECT_EQ(fixture.Take(search()), row.result);
    std::vector<std::string> expected = row.notes;
    if (row.result != "none" && !row.result.starts_with("system")) {
        expected.push_back("load " + row.result);
        expected.push_back("unload " + row.result);
    }
    EXPECT_EQ(fixture.TakeNotes(), expected);
    EXPECT_EQ(Platform::LoadLibraryEx(u"olmapi32.dll", 0), nullptr) << "Outlook's folder is searched no more";
}

} // namespace

TEST(ProviderSearch, TakesTheFirstOfTheAttemptsInOrder) {
    const std::vector<const char16_t*> client = {u"Client\\ex.dll", u"Client\\plain.dll", u"Office\\olmapi32.dll"};
    const std::vector<std::string> asked = {"load " + ComponentLibrary, "component {id} 1031 260 0",
                                            "unload " + ComponentLibrary};
    const std::vector<const char16_t*> common = {u"Common\\System\\MSMAPI\\1031\\MSMAPI32.DLL",
                                                 u"Common\\System\\MSMAPI\\1033\\MSMAPI32.DLL"};
    // clang-format off
    const Row rows[] = {
        {"component", client, {DefaultClient, ClientPathEx, ClientComponent, ClientLanguage}, "office\\olmapi32.dll",
            asked, u"Office\\olmapi32.dll"},
        {"unknown component", client, {DefaultClient, ClientPathEx, ClientComponent, ClientLanguage}, "client\\ex.dll",
            asked},
        {"nothing is known", {}, {}, "system\\mapi32.dll"},
        {"first path", client, {DefaultClient, ClientPathEx, ClientPath, OutlookProgram}, "client\\ex.dll"},
        {"second path", client, {DefaultClient, ClientPath, OutlookProgram}, "client\\plain.dll"},
        {"first path leads nowhere", {u"Client\\plain.dll"}, {DefaultClient, ClientPathEx, ClientPath},
            "client\\plain.dll"},
        {"path with a variable", client, {DefaultClient, {Machine, Client, u"DllPathEx", RegExpandSz,
            u"%PROVIDER_ROOT%\\Client\\ex.dll"}}, "client\\ex.dll"},
        {"path of no text type", client, {DefaultClient, ClientPath, {Machine, Client, u"DllPathEx", RegMultiSz,
            u"{R}\\Client\\ex.dll"}}, "client\\plain.dll"},
        {"component without language", client, {DefaultClient, ClientPathEx, ClientComponent}, "client\\ex.dll"},
        {"client without a key", client, {{Machine, Mail, u"", RegSz, u"Other"}, OutlookProgram},
            "office\\olmapi32.dll"},
        {"name of the client of another type", client, {{Machine, Mail, u"", RegExpandSz, u"Client"}, ClientPathEx,
            OutlookProgram}, "office\\olmapi32.dll"},
        {"Outlook is the default client", client, {{Machine, Mail, u"", RegSz, u"Microsoft Outlook"}, {Machine,
            Outlook, u"DllPathEx", RegSz, u"{R}\\Client\\ex.dll"}, OutlookProgram}, "office\\olmapi32.dll"},
        {"Outlook's program of another type", client, {{Machine, AppPath, u"", RegExpandSz,
            u"{R}\\Office\\OUTLOOK.EXE"}}, "none"},
        {"Outlook's program not set", client, {{Machine, AppPath, u"Path", RegSz, u"x"}}, "none"},
        {"Outlook's program unreadable", client, {{Machine, AppPath, u"", RegSz, std::u16string(270, u'x')}}, "none"},
        {"Outlook's folder too long", client, {{Machine, AppPath, u"", RegSz, std::u16string(260, u'x'), 0, false}},
            "system\\mapi32.dll"},
        {"Outlook's folder without library", {}, {OutlookProgram, Common}, "system\\mapi32.dll"},
        {"a folder has the library's name", {u"Office\\olmapi32.dll\\", common[0], common[1]}, {OutlookProgram, Common,
            GermanPlace, German}, "common\\system\\msmapi\\1031\\msmapi32.dll"},
        {"no language of Outlook's", common, {OutlookProgram, Common}, "common\\system\\msmapi\\1033\\msmapi32.dll"},
        {"no library in the language", {common[1]}, {OutlookProgram, Common, GermanPlace, German},
            "common\\system\\msmapi\\1033\\msmapi32.dll"},
        {"separator at the end", common, {OutlookProgram, {Machine, Windows, u"CommonFilesDir", RegExpandSz,
            u"%PROVIDER_ROOT%\\Common\\"}}, "common\\system\\msmapi\\1033\\msmapi32.dll"},
        {"beside a file", {u"Common\\file", common[1]}, {OutlookProgram, {Machine, Windows, u"CommonFilesDir", RegSz,
            u"{R}\\Common\\file"}}, "common\\system\\msmapi\\1033\\msmapi32.dll"},
    };
    // clang-format on
    for (const Row& row : rows) {
        Try(row);
    }
    outlookOnly = true;
    Try({"Outlook only", client, {DefaultClient, ClientPathEx}, "none"});
    Try({"Outlook only, found", client, {DefaultClient, ClientPathEx, OutlookProgram}, "office\\olmapi32.dll"});
    outlookOnly = false;
}

TEST(ProviderSearch, AsksTheInstallerForEachLanguage) {
    const Value component{User, Outlook, u"MSIComponentID", RegSz, u"{Id}"};
    const Value longId{User, Outlook, u"MSIComponentID", RegSz, std::u16string(42, u'x')};
    const Value ofMachine{Machine, Outlook, u"MSIComponentID", RegSz, u"{Id}"};
    const std::vector<std::string> all = {"{id} 1031\\nt", "{id} 1033\\nt", "{id} 1033\\nt", "{id} 1033\\nt",
                                          "{id} 1031",     "{id} 1033",     "{id} 1033",     "{id} 1033"};
    struct InstallerRow {
        const char* name;
        std::vector<Value> values;
        std::size_t answered; // the question that is answered, from 1
        std::vector<std::string> questions;
        std::string result = "component.dll";
        bool bringsProvider = false;
    };
    const InstallerRow rows[] = {
        {"sixth question", {component, GermanPlace}, 6, {all.begin(), all.begin() + 6}},
        {"no answer", {component, GermanPlace}, 9, all, "system\\mapi32.dll"},
        {"the machine's key without the user's", {ofMachine}, 1, {all[1]}},
        {"the user's key has no component", {GermanPlace, ofMachine}, 1, {}, "system\\mapi32.dll"},
        {"too long", {longId}, 1, {}, "system\\mapi32.dll"},
        {"the installer brings it", {component, GermanPlace}, 2, {all[0], all[1]}, "office\\olmapi32.dll", true},
    };
    for (const InstallerRow& row : rows) {
        SCOPED_TRACE(row.name);
        const CFixture fixture;
        fixture.Make(u"Office\\beside.dll");
        fixture.Set(OutlookProgram);
        fixture.Set(German);
        for (const Value& value : row.values) {
            fixture.Set(value);
        }
        std::vector<std::string> questions;
        installer = [&](const std::string& question, std::u16string& path) {
            questions.push_back(question);
            EXPECT_EQ(fixture.Take(Platform::LoadLibraryEx(u"beside.dll", 0)), "office\\beside.dll");
            if (questions.size() != row.answered) {
                return Platform::ErrorUnknownComponent;
            }
            path = fixture.Whole(u"component.dll");
            fixture.Make(u"component.dll");
            if (row.bringsProvider) {
                fixture.Make(u"Office\\olmapi32.dll");
            }
            return Platform::ErrorSuccess;
        };
        EXPECT_EQ(fixture.Take(LoadMapiProvider()), row.result);
        EXPECT_EQ(questions, row.questions);
        if (row.bringsProvider) {
            EXPECT_EQ(fixture.Take(Platform::GetModuleHandle(u"component.dll")), "component.dll") << "still loaded";
        }
        installer = nullptr;
    }
}

TEST(ProviderSearch, LeavesTheReasonInTheLastError) {
    const CFixture fixture;
    fixture.Make(u"there.dll");
    fixture.Make(u"elsewhere\\there.dll");
    struct ReasonRow {
        const char* name;
        std::uint32_t result;
        std::u16string path;
        std::uint32_t error;
    };
    const ReasonRow components[] = {{"refused", 1607, u"", 1607},
                                    {"missing", 0, fixture.Whole(u"gone.dll"), 2},
                                    {"missing folder", 0, fixture.Whole(u"gone\\gone.dll"), 2},
                                    {"folder", 0, fixture.Whole(u"elsewhere"), 2}};
    for (const ReasonRow& row : components) {
        installer = [&](const std::string&, std::u16string& path) {
            path = row.path;
            return row.result;
        };
        EXPECT_EQ(LoadQualifiedComponent(u"{Id}", u"1033"), nullptr) << row.name;
        EXPECT_EQ(Platform::GetLastError(), row.error) << row.name;
    }
    installer = [&](const std::string&, std::u16string& path) {
        path = fixture.Whole(u"elsewhere\\there.dll");
        return 0U;
    };
    const Platform::Module loaded = Platform::LoadLibraryEx(fixture.Whole(u"there.dll").c_str(), 0);
    EXPECT_EQ(fixture.Take(LoadQualifiedComponent(u"{Id}", u"1033")), "there.dll") << "the process has one already";
    Platform::FreeLibrary(loaded);
    installer = nullptr;

    const std::u16string tooMuch = u"%PROVIDER_ROOT%" + std::u16string(240, u'x');
    const std::u16string tooLong(260, u'x');
    struct FolderRow {
        const char* name;
        std::uint32_t type;
        const char16_t *folder, *path;
        std::uint32_t error;
    };
    const FolderRow folders[] = {{"another type", RegMultiSz, u"{R}\\|", u"x.dll", 87},
                                 {"expands to too much", RegExpandSz, tooMuch.c_str(), u"x.dll", 122},
                                 {"missing folder", RegSz, u"{R}\\gone", u"x.dll", 2},
                                 {"too long together", RegSz, u"{R}\\elsewhere", tooLong.c_str(), 122},
                                 {"no library", RegSz, u"{R}\\elsewhere", u"x.dll", 126}};
    EXPECT_EQ(LoadUnderCommonFiles(u"x.dll"), nullptr);
    EXPECT_EQ(Platform::GetLastError(), 2U) << "no key";
    fixture.Set({Machine, Windows, u"Other", RegSz, u""});
    EXPECT_EQ(LoadUnderCommonFiles(u"x.dll"), nullptr);
    EXPECT_EQ(Platform::GetLastError(), 2U) << "no value";
    for (const FolderRow& row : folders) {
        fixture.Set({Machine, Windows, u"CommonFilesDir", row.type, row.folder});
        EXPECT_EQ(LoadUnderCommonFiles(row.path), nullptr) << row.name;
        EXPECT_EQ(Platform::GetLastError(), row.error) << row.name;
    }
    EXPECT_EQ(fixture.Take(LoadUnderCommonFiles(u"\\there.dll")), "elsewhere\\there.dll") << "one separator";
}

TEST(ProviderSearch, ReadsOutlooksLanguage) {
    constexpr const char16_t* policy = u"Software\\Policy\\Lang";
    constexpr const char16_t* software = u"Software\\Lang";
    const auto place = [](std::uint32_t root, const char16_t* name, const char16_t* value) {
        return Value{root, Outlook, name, RegMultiSz, std::u16string(u"Lang|") + value + u"|"};
    };
    const auto number = [](const char16_t* key, const char16_t* name, std::uint32_t lcid) {
        return Value{User, key, name, RegDword, u"", lcid};
    };
    const Value userApplication = place(User, u"MSIApplicationLCID", u"a");
    const Value userOffice = place(User, u"MSIOfficeLCID", u"b");
    const Value machineApplication = place(Machine, u"MSIApplicationLCID", u"c");
    const Value machineOffice = place(Machine, u"MSIOfficeLCID", u"d");
    struct LanguageRow {
        const char* name;
        std::vector<Value> values;
        std::uint32_t lcid;
    };
    // clang-format off
    const LanguageRow rows[] = {
        {"nothing", {}, 0},
        {"policy first for the user", {userApplication, number(policy, u"a", 1), number(software, u"a", 2)}, 1},
        {"software first for the machine", {machineApplication, number(policy, u"c", 1), number(software, u"c", 2)},
            2},
        {"policy second for the machine", {machineOffice, number(policy, u"d", 3)}, 3},
        {"first place without a number", {userApplication, userOffice, number(software, u"b", 4)}, 4},
        {"all places", {userApplication, userOffice, machineApplication, machineOffice, number(policy, u"a", 1),
            number(policy, u"b", 2), number(policy, u"c", 3), number(policy, u"d", 4)}, 1},
        {"the machine's places", {machineApplication, machineOffice, number(policy, u"c", 3), number(policy, u"d", 4)},
            3},
        {"the number is the user's", {machineOffice, {Machine, software, u"d", RegDword, u"", 5}}, 0},
        {"a number of another type", {userApplication, {User, policy, u"a", RegSz, u"x"}, number(software, u"a", 6)},
            6},
        {"a place of another type", {{User, Outlook, u"MSIApplicationLCID", RegSz, u"Lang"}, userOffice,
            number(software, u"b", 7)}, 7},
        {"zero ends it", {userApplication, number(policy, u"a", 0), number(software, u"a", 8)}, 0},
        {"a place without a name", {{User, Outlook, u"MSIOfficeLCID", RegMultiSz, u"Lang"}, number(software, u"", 9)},
            9},
    };
    // clang-format on
    for (const LanguageRow& row : rows) {
        const CFixture fixture;
        for (const Value& value : row.values) {
            fixture.Set(value);
        }
        EXPECT_EQ(ReadOutlookLcid(), row.lcid) << row.name;
    }
}

TEST(ProviderSearch, PlainNamesAreFoundInTheFolderSetForThem) {
    const CFixture fixture;
    fixture.Make(u"set\\plainname.dll");
    EXPECT_EQ(fixture.Take(Platform::LoadLibraryEx(u"plainname.dll", 0)), "none");
    EXPECT_TRUE(Platform::SetDllDirectory(fixture.Whole(u"set\\").c_str()));
    EXPECT_EQ(fixture.Take(Platform::LoadLibraryEx(u"plainname.dll", 0)), "set\\plainname.dll");
    EXPECT_TRUE(Platform::SetDllDirectory(nullptr));
    EXPECT_EQ(fixture.Take(Platform::LoadLibraryEx(u"plainname.dll", 0)), "none");
}

TEST(MapiProvider, WhatTheProcessHasIsUsedWithoutASearch) {
    const CFixture fixture;
    fixture.Make(u"msmapi32.dll");
    fixture.Make(u"olmapi32.dll");
    fixture.Make(u"Client\\ex.dll");
    fixture.Set(DefaultClient);
    fixture.Set(ClientPathEx);
    const std::uint32_t generation = providerGeneration;
    const Platform::Module second = Platform::LoadLibraryEx(fixture.Whole(u"msmapi32.dll").c_str(), 0);
    EXPECT_EQ(LocateMapiModule(), second);
    EXPECT_EQ(LocateMapiModule(), second);
    EXPECT_EQ(providerGeneration, generation + 1) << "set once";
    Forget();
    const Platform::Module first = Platform::LoadLibraryEx(fixture.Whole(u"olmapi32.dll").c_str(), 0);
    EXPECT_EQ(LocateMapiModule(), first);
    Forget();
    Platform::FreeLibrary(first);
    Platform::FreeLibrary(second);
    EXPECT_EQ(fixture.Short(PathOf(LocateMapiModule())), "client\\ex.dll") << "none counted too often";
    Forget();
}

TEST(MapiProvider, OneOfSeveralThreadsSetsIt) {
    const CFixture fixture;
    fixture.Make(u"component.dll");
    fixture.Set(OutlookProgram);
    fixture.Set({User, Outlook, u"MSIComponentID", RegSz, u"{Id}"});
    const std::uint32_t generation = providerGeneration;
    std::atomic<int> searching{4};
    installer = [&](const std::string&, std::u16string& path) {
        for (--searching; searching > 0;) {
            std::this_thread::yield(); // until all of them are in the midst of their search
        }
        path = fixture.Whole(u"component.dll");
        return 0U;
    };
    std::vector<Platform::Module> found(4);
    std::vector<std::thread> threads;
    for (Platform::Module& mine : found) {
        threads.emplace_back([&mine] { mine = LocateMapiModule(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    installer = nullptr;
    EXPECT_EQ(found, std::vector<Platform::Module>(4, providerModule));
    EXPECT_EQ(providerGeneration, generation + 4);
    Forget();
    EXPECT_EQ(Platform::GetModuleHandle(u"component.dll"), nullptr) << "what was loaded in vain is given back";
}

namespace {

/// As a pointer of whatever type is asked for.
struct CNumber {
    std::uintptr_t value;
    template <class T>
    operator T*() const {
        return std::bit_cast<T*>(value);
    }
};

} // namespace

TEST(MapiEntries, AreBoundWhenCalledAndAgainForANewLibrary) {
    const CFixture fixture;
    constexpr auto failed = static_cast<std::int32_t>(0x80004005);
    constexpr CNumber one{1};
    constexpr CNumber two{2};
    constexpr CNumber three{3};
    struct EntryRow {
        std::string note;
        std::function<std::int64_t()> call;
        std::int64_t without;
        std::int64_t with = 77;
    };
    const EntryRow rows[] = {
        {"mapiinitialize 1", [&] { return MAPIInitialize(one); }, failed},
        {"mapiuninitialize", [&] { return MAPIUninitialize(), 0; }, 0, 0},
        {"mapilogonex 9 1 2 4 5", [&] { return MAPILogonEx(9, one, two, 4, CNumber{5}); }, failed},
        {"mapiallocatebuffer 9 5", [&] { return MAPIAllocateBuffer(9, CNumber{5}); }, failed},
        {"mapifreebuffer 2", [&] { return MAPIFreeBuffer(two); }, 0},
        {"hrqueryallrows 1 2 3 4 5 6", [&] { return HrQueryAllRows(one, two, three, CNumber{4}, 5, CNumber{6}); },
         failed},
        {"freeprows 1", [&] { return FreeProws(one), 0; }, 0, 0},
        {"freepadrlist 1", [&] { return FreePadrlist(one), 0; }, 0, 0},
        {"hrgetoneprop 1 7 3", [&] { return HrGetOneProp(one, 7, three); }, failed},
        {"hrsetoneprop 1 2", [&] { return HrSetOneProp(one, two); }, failed},
    };
    fixture.Set({Machine, AppPath, u"", RegDword, u""}); // ends every search
    for (const EntryRow& row : rows) {
        EXPECT_EQ(row.call(), row.without) << row.note;
    }
    fixture.Make(u"Client\\ex.dll");
    fixture.Make(u"Client\\plain.dll");
    fixture.Set(DefaultClient);
    for (const Value& value : {ClientPath, ClientPathEx}) {
        fixture.Set(value);
        LocateMapiModule();
        fixture.TakeNotes();
        for (const EntryRow& row : rows) {
            EXPECT_EQ(row.call(), row.with) << row.note;
            EXPECT_EQ(fixture.TakeNotes(), std::vector{row.note});
        }
        Forget(); // the entries of the first library are gone now, and a call of one would not end well
    }
    for (const EntryRow& row : rows) {
        fixture.Set({Machine, Mail, u"", RegSz, u"Gone"});
        EXPECT_EQ(row.call(), row.without) << row.note;
    }
}
