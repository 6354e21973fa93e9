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

using namespace Tsx;

namespace {

struct Row {
    const char16_t *name, *text;
};

#define MESSAGE(name, text) {u## #name, u"" text},
constexpr Row Rows[] = {
#include "app/res/messages.inc"
};
constexpr Row German[] = {
#include "languages/german.inc"
};
#undef MESSAGE
constexpr std::span<const Row> Translations[] = {German}; // of every library in languages/

constexpr std::uint32_t FirstId = 4096; // every module's rows are numbered from here on

template <class TFunction>
TFunction* Export(const char* name, Platform::Module module = Platform::GetProgramModule()) {
    return reinterpret_cast<TFunction*>(Platform::GetProcAddress(module, name));
}

// The parameters that a text uses and the number of its line ends.
std::pair<std::set<char16_t>, std::ptrdiff_t> FormOf(std::u16string_view text) {
    std::set<char16_t> parameters;
    for (std::size_t i = text.find(u'%'); i < text.size() - 1; i = text.find(u'%', i + 1)) {
        parameters.insert(text[i + 1]);
    }
    return {parameters, std::ranges::count(text, u'\n')};
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
    Platform::FixedFileInfo fixed{};
    EXPECT_EQ(version.GetString(u"FileDescription") + u" " + version.GetString(u"OriginalFilename"),
              u"Resource DLL corvane2.dll");
    EXPECT_TRUE(version.GetFixedInfo(fixed) && fixed.dwFileType == 2) << "VFT_DLL";
    EXPECT_TRUE(Platform::FreeLibrary(library));
    version.Load(FileSystem::GetProgramPath());
    EXPECT_EQ(version.GetString(u"MessageHandler"), u"") << "a string that the record lacks";
    EXPECT_TRUE(version.GetFixedInfo(fixed) && fixed.dwSignature == 0xFEEF04BD);
    EXPECT_EQ(fixed.dwFileVersionMS, std::uint32_t{RESOURCE_FILE_VERSION_MAJOR} << 16 | RESOURCE_FILE_VERSION_MINOR);
    EXPECT_EQ(fixed.dwFileVersionLS, std::uint32_t{RESOURCE_FILE_VERSION_PATCH} << 16 | RESOURCE_FILE_VERSION_BUILD);
}

TEST(Resources, TranslationsKeepNamesParametersAndLines) {
    for (const std::span<const Row> translation : Translations) {
        const std::string language = Readable(translation[0].text);
        EXPECT_EQ(translation.size(), std::size(Rows)) << language;
        for (std::size_t i = 0; i < std::min(translation.size(), std::size(Rows)); ++i) {
            const std::string name = Readable(Rows[i].name);
            ASSERT_EQ(Readable(translation[i].name), name) << language << ": the first that differs";
            EXPECT_EQ(FormOf(translation[i].text), FormOf(Rows[i].text)) << language << " " << name;
            EXPECT_NE(*translation[i].text, u'\0') << language << " " << name;
        }
    }
}

TEST(Resources, IconsAreFoundByNameAndAFreedLibraryHasNothing) {
    const CUnicodeString path = TestFile(TEST_LANGUAGE);
    const Platform::Module library = Platform::LoadLibraryEx(path.Text(), Platform::LoadWithAlteredSearchPath);
    const auto errorOf = [&](const char16_t* name, std::uint32_t type) {
        return Platform::FindResource(library, name, type) ? 0 : Platform::GetLastError();
    };
    EXPECT_EQ(errorOf(u"TestIcon", Platform::RtGroupIcon), 0U);
    EXPECT_EQ(errorOf(u"ABSENT", Platform::RtGroupIcon), Platform::ErrorResourceNameNotFound);
    // Twice loaded, it is there until it has been freed twice.
    EXPECT_EQ(Platform::LoadLibraryEx(path.Text(), Platform::LoadWithAlteredSearchPath), library);
    char16_t buffer[300] = {};
    for (const bool isThere : {true, false}) {
        EXPECT_TRUE(Platform::FreeLibrary(library));
        EXPECT_EQ(Platform::GetModuleFileName(library, buffer, 300) > 0, isThere);
        EXPECT_EQ(Platform::LoadString(library, FirstId, buffer, 300) > 0, isThere);
        EXPECT_EQ(Platform::FindResource(library, u"TESTICON", Platform::RtGroupIcon), isThere);
        EXPECT_EQ(Platform::GetProcAddress(library, "GetResourceID") != nullptr, isThere);
    }
    EXPECT_FALSE(Platform::FreeLibrary(library));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorModuleNotFound);
}
