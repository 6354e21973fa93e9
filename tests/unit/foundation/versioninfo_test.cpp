#include "foundation/inc/versioninfo.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/programidentity.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"

using namespace Tsx;

TEST(VersionInfo, AFileWithoutARecordHasNothingToTell) {
    const CTestFolder folder;
    folder.Write(u"elf.dll", std::string("\x7F") + "ELF\x02\x01\x01" + std::string(60, '\xFF'));
    for (const char16_t* name : {u"elf.dll", u"none\\x.dll"}) {
        CVersionInfo version;
        version.Load(folder / name);
        Platform::FixedFileInfo fixed{};
        EXPECT_TRUE(version.GetString(u"InternalName").IsEmpty() && !version.GetFixedInfo(fixed)) << Readable(name);
    }
}

TEST(ProgramIdentity, IsWhatTheRecordSaysOrTheTitle) {
    CVersionInfo own;
    own.Load(FileSystem::GetProgramPath());
    const CProgramIdentity program = IdentifyProgram(own, u"tool");
    EXPECT_TRUE(program.HasLogo);
    EXPECT_EQ(program.Name + u'|' + program.RegistryPath, u"Corvane|Software\\Ostrel\\Corvane\\5.00");
    EXPECT_EQ(program.Logo[0] + u'|' + program.Logo[1] + u'|' + program.Logo[2] + u'|' + program.Logo[3],
              u"Corvane|Corvane mail command|5.0|Copyright (c) Ostrel");
    const CProgramIdentity bare = IdentifyProgram(CVersionInfo(), u"tool");
    EXPECT_TRUE(bare.RegistryPath == u"Software\\Ostrel\\tool" && !bare.HasLogo);
}
