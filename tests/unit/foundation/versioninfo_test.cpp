#include "foundation/inc/versioninfo.h"

#include "tests/support/folder.h"
#include "tests/support/text.h"

using namespace Tsx;

TEST(VersionInfo, AFileWithoutARecordHasNothingToTell) {
    const CTestFolder folder;
    folder.Write(u"short.dll", "MZ");
    folder.Write(u"empty.dll", "");
    folder.Write(u"elf.dll", std::string("\x7F") + "ELF\x02\x01\x01" + std::string(60, '\xFF'));
    for (const char16_t* name : {u"short.dll", u"empty.dll", u"elf.dll", u"missing.dll", u"none\\x.dll"}) {
        CVersionInfo version;
        version.Load(folder / name);
        Platform::FixedFileInfo fixed{};
        EXPECT_EQ(version.GetString(u"InternalName"), u"") << Readable(name);
        EXPECT_FALSE(version.GetFixedInfo(fixed)) << Readable(name);
    }
}
