// The message table, strings and version record of the built program and of libraries, as every module serves them.
#include "platform/inc/resources.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/versioninfo.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <set>
#include <span>
#include <string>

using namespace Tsx;

namespace {

struct Row {
    const char16_t* name;
    const char16_t* text;
};

constexpr Row Rows[] = {
#define MESSAGE(name, text) {u## #name, u"" text},
#include "app/res/messages.inc"
#undef MESSAGE
};

constexpr Row German[] = {
#define MESSAGE(name, text) {u## #name, u"" text},
#include "languages/german.inc"
#undef MESSAGE
};

constexpr std::uint32_t FirstId = 4096; // every module's rows are numbered from here on

template <class TFunction>
TFunction* Export(const char* name, Platform::Module module = Platform::GetProgramModule()) {
    return reinterpret_cast<TFunction*>(Platform::GetProcAddress(module, name));
}

// Of every library in languages/.
constexpr std::span<const Row> Translations[] = {German};

// The parameters that a text uses: "012" for three.
std::u16string ParametersOf(std::u16string_view text) {
    std::set<char16_t> used;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == u'%') {
            used.insert(text[i + 1]);
        }
    }
    return {used.begin(), used.end()};
}

} // namespace

TEST(Resources, EveryModuleServesItsOwn) {
    const CUnicodeString path = TestFile(GERMAN_LANGUAGE);
    const Platform::Module library = Platform::LoadLibraryEx(path.Text(), Platform::LoadWithAlteredSearchPath);
    ASSERT_TRUE(library);
    const std::pair<Platform::Module, std::span<const Row>> modules[] = {{Platform::GetProgramModule(), Rows},
                                                                         {library, German}};
    for (const auto& [module, rows] : modules) {
        auto* getResourceId = Export<std::uint32_t(const char16_t*)>("GetResourceID", module);
        auto* getMessageName = Export<const char16_t*(std::int32_t)>("GetMessageName", module);
        ASSERT_TRUE(getResourceId && getMessageName);
        EXPECT_EQ(static_cast<std::size_t>(Export<std::int32_t()>("NumberOfMessages", module)()), rows.size());
        EXPECT_EQ(Export<std::uint32_t()>("GetMessageSystemVersion", module)(), 200U);
        EXPECT_EQ(getResourceId(u"err_bad_archive"), 0U) << "case counts";
        EXPECT_EQ(getResourceId(u"ZZZ"), 0U);
        std::uint32_t id = FirstId;
        CUnicodeString text;
        for (const Row& row : rows) {
            EXPECT_EQ(getResourceId(row.name), id) << Readable(row.name);
            EXPECT_EQ(Readable(getMessageName(static_cast<std::int32_t>(id - FirstId))), Readable(row.name));
            EXPECT_TRUE(text.LoadString(module, id++) && text == row.text) << Readable(row.name);
        }
        EXPECT_FALSE(text.LoadString(module, id));
        EXPECT_TRUE(text.IsEmpty());
    }
    EXPECT_FALSE(Export<int>("__TessarixUsed", library)) << "the mark is the program's alone";
    EXPECT_FALSE(Platform::FindResource(library, u"TESTICON", Platform::RtGroupIcon));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorResourceTypeNotFound);
    CVersionInfo version;
    version.Load(path);
    EXPECT_EQ(version.GetString(u"FileDescription"), u"Resource DLL");
    EXPECT_EQ(version.GetString(u"OriginalFilename"), u"corvane2.dll");
    Platform::FixedFileInfo fixed{};
    ASSERT_TRUE(version.GetFixedInfo(fixed));
    EXPECT_EQ(fixed.dwFileType, 2U) << "VFT_DLL";
    EXPECT_TRUE(Platform::FreeLibrary(library));
}

TEST(Resources, VersionRecord) {
    CVersionInfo version;
    version.Load(FileSystem::GetProgramPath());
    EXPECT_EQ(version.GetString(u"InternalName"), u"Corvane");
    EXPECT_EQ(version.GetString(u"FileDescription"), u"Corvane mail command");
    const auto major = std::uint32_t{RESOURCE_FILE_VERSION_MAJOR};
    const auto minor = std::uint32_t{RESOURCE_FILE_VERSION_MINOR};
    EXPECT_EQ(version.GetString(u"ProductVersion"), CUnicodeString::Format(u"%u.%u", major, minor));
    EXPECT_EQ(version.GetString(u"LegalCopyright"), u"Copyright (c) Ostrel");
    EXPECT_EQ(version.GetString(u"MessageHandler"), u"") << "a string that the record lacks";
    Platform::FixedFileInfo fixed{};
    ASSERT_TRUE(version.GetFixedInfo(fixed));
    EXPECT_EQ(fixed.dwSignature, 0xFEEF04BDU);
    EXPECT_EQ(fixed.dwFileVersionMS, major << 16 | minor);
    EXPECT_EQ(fixed.dwFileVersionLS,
              std::uint32_t{RESOURCE_FILE_VERSION_PATCH} << 16 | std::uint32_t{RESOURCE_FILE_VERSION_BUILD});
    CVersionInfo none;
    none.Load(u"no such file");
    EXPECT_EQ(none.GetString(u"InternalName"), u"");
    EXPECT_FALSE(none.GetFixedInfo(fixed));
}

TEST(Resources, TranslationsKeepNamesParametersAndLines) {
    for (const std::span<const Row> translation : Translations) {
        const std::string language = Readable(translation[0].text);
        const std::size_t count = std::min(translation.size(), std::size(Rows));
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(Readable(translation[i].name), Readable(Rows[i].name)) << language << ": the first that differs";
            const std::string name = language + " " + Readable(Rows[i].name);
            const std::u16string_view english = Rows[i].text;
            const std::u16string_view text = translation[i].text;
            EXPECT_EQ(ParametersOf(text), ParametersOf(english)) << name;
            EXPECT_EQ(std::ranges::count(text, u'\n'), std::ranges::count(english, u'\n')) << name;
            EXPECT_FALSE(text.empty()) << name;
        }
        EXPECT_EQ(translation.size(), std::size(Rows))
            << language << ": differs behind " << Readable(Rows[count - 1].name);
    }
}

TEST(Resources, IconsAreFoundByNameAndAFreedLibraryHasNothing) {
    const CUnicodeString path = TestFile(TEST_LANGUAGE);
    const Platform::Module library = Platform::LoadLibraryEx(path.Text(), Platform::LoadWithAlteredSearchPath);
    ASSERT_TRUE(library);
    struct Icon {
        const char16_t* name;
        std::uint32_t type;
        std::uint32_t error; // 0 for one that is found
    };
    for (const Icon& icon : {Icon{u"TESTICON", Platform::RtGroupIcon, 0}, Icon{u"TestIcon", Platform::RtGroupIcon, 0},
                             Icon{u"ABSENT", Platform::RtGroupIcon, Platform::ErrorResourceNameNotFound},
                             Icon{u"TESTICON", 12, Platform::ErrorResourceTypeNotFound}}) {
        EXPECT_EQ(Platform::FindResource(library, icon.name, icon.type), icon.error == 0) << Readable(icon.name);
        if (icon.error != 0) {
            EXPECT_EQ(Platform::GetLastError(), icon.error) << Readable(icon.name);
        }
    }
    char16_t buffer[300] = {};
    EXPECT_GT(Platform::LoadString(library, FirstId, buffer, 300), 0);
    // Twice loaded, it is there until it has been freed twice.
    EXPECT_EQ(Platform::LoadLibraryEx(path.Text(), Platform::LoadWithAlteredSearchPath), library);
    EXPECT_TRUE(Platform::FreeLibrary(library));
    EXPECT_GT(Platform::GetModuleFileName(library, buffer, 300), 0U);
    EXPECT_TRUE(Platform::FreeLibrary(library));
    EXPECT_EQ(Platform::GetModuleFileName(library, buffer, 300), 0U);
    EXPECT_EQ(Platform::LoadString(library, FirstId, buffer, 300), 0);
    EXPECT_FALSE(Platform::FindResource(library, u"TESTICON", Platform::RtGroupIcon));
    EXPECT_FALSE(Platform::GetProcAddress(library, "GetResourceID"));
    EXPECT_FALSE(Platform::FreeLibrary(library));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorModuleNotFound);
}
