// The message table, strings and version record of the built program, as every module serves them.
#include "platform/inc/resources.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/versioninfo.h"
#include "platform/inc/modules.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

struct Row {
    std::uint32_t id;
    const char16_t* name;
    const char16_t* text;
};

constexpr Row Rows[] = {
#define MESSAGE(id, name, text) {id, u## #name, u"" text},
#include "app/res/messages.inc"
#undef MESSAGE
};

template <class TFunction>
TFunction* Export(const char* name) {
    return reinterpret_cast<TFunction*>(Platform::GetProcAddress(Platform::GetProgramModule(), name));
}

} // namespace

TEST(Resources, EveryMessageIsFoundByNameAndById) {
    auto* getResourceId = Export<std::uint32_t(const char16_t*)>("GetResourceID");
    auto* getMessageName = Export<const char16_t*(std::int32_t)>("GetMessageName");
    ASSERT_TRUE(getResourceId && getMessageName);
    EXPECT_EQ(Export<std::int32_t()>("NumberOfMessages")(), 61);
    EXPECT_EQ(Export<std::uint32_t()>("GetMessageSystemVersion")(), 200U);
    EXPECT_EQ(getResourceId(u"err_bad_archive"), 0U) << "case counts";
    EXPECT_EQ(getResourceId(u"ZZZ"), 0U);
    std::uint32_t expectedId = 4096;
    for (const Row& row : Rows) {
        EXPECT_EQ(row.id, expectedId++);
        EXPECT_EQ(getResourceId(row.name), row.id) << Readable(row.name);
        EXPECT_EQ(std::u16string_view(getMessageName(static_cast<std::int32_t>(row.id - 4096))), row.name);
        CUnicodeString text;
        EXPECT_TRUE(text.LoadString(Platform::GetProgramModule(), row.id));
        EXPECT_EQ(text, row.text) << "long ones too";
    }
    CUnicodeString none(u"old");
    EXPECT_FALSE(none.LoadString(Platform::GetProgramModule(), 4157));
    EXPECT_TRUE(none.IsEmpty());
}

TEST(Resources, VersionRecord) {
    CVersionInfo version;
    version.Load(FileSystem::GetProgramPath());
    EXPECT_EQ(version.GetString(u"InternalName"), u"Corvane");
    EXPECT_EQ(version.GetString(u"FileDescription"), u"Corvane mail command");
    EXPECT_EQ(version.GetString(u"ProductVersion"), u"5.0");
    EXPECT_EQ(version.GetString(u"LegalCopyright"), u"Copyright (c) Ostrel");
    EXPECT_EQ(version.GetString(u"MessageHandler"), u"") << "a string that the record lacks";
    Platform::FixedFileInfo fixed{};
    ASSERT_TRUE(version.GetFixedInfo(fixed));
    EXPECT_EQ(fixed.dwSignature, 0xFEEF04BDU);
    EXPECT_EQ(fixed.dwFileVersionMS, 0x00050000U);
    EXPECT_EQ(fixed.dwFileVersionLS, 111U);
    CVersionInfo none;
    none.Load(u"no such file");
    EXPECT_EQ(none.GetString(u"InternalName"), u"");
    EXPECT_FALSE(none.GetFixedInfo(fixed));
}
