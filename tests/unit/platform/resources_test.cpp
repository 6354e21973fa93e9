// The strings and the version record of the built program, as every module serves them.
#include "platform/inc/resources.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/versioninfo.h"
#include "platform/inc/modules.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

template <class TFunction>
TFunction* Export(const char* name) {
    return reinterpret_cast<TFunction*>(Platform::GetProcAddress(Platform::GetProgramModule(), name));
}

} // namespace

// What is there is looked up by tests of the messages and of the built program.
TEST(Resources, WhatIsNotThereIsNotFound) {
    auto* getResourceId = Export<std::uint32_t(const char16_t*)>("GetResourceID");
    ASSERT_TRUE(getResourceId);
    EXPECT_EQ(getResourceId(u"err_bad_archive"), 0U) << "case counts";
    EXPECT_EQ(getResourceId(u"ZZZ"), 0U);
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
