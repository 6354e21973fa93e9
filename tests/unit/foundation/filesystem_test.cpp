#include "foundation/inc/filesystem.h"

#include "tests/support/text.h"

using namespace Tsx;

TEST(FileSystem, SplitsNames) {
    struct Row {
        const char16_t* path;
        const char16_t* drive;
        const char16_t* dir;
        const char16_t* name;
        const char16_t* ext;
    };
    constexpr Row rows[] = {{u"C:\\a\\b.tar.gz", u"C:", u"\\a\\", u"b.tar", u".gz"},
                            {u"a/b", u"", u"a/", u"b", u""},
                            {u"C:.x", u"C:", u"", u"", u".x"},
                            {u"C:x", u"C:", u"", u"x", u""},
                            {u"a.b\\c", u"", u"a.b\\", u"c", u""},
                            {u"a\\b/", u"", u"a\\b/", u"", u""},
                            {u"\\\\srv\\sh\\f.", u"", u"\\\\srv\\sh\\", u"f", u"."},
                            {u"", u"", u"", u"", u""}};
    for (const Row& row : rows) {
        CUnicodeString drive;
        CUnicodeString dir;
        CUnicodeString name;
        CUnicodeString ext;
        FileSystem::SplitName(row.path, drive, dir, name, ext);
        EXPECT_EQ(drive + u"|" + dir + u"|" + name + u"|" + ext,
                  CUnicodeString::Format(u"%s|%s|%s|%s", row.drive, row.dir, row.name, row.ext));
        EXPECT_EQ(FileSystem::GetNameAndExt(row.path), CUnicodeString(row.name) + row.ext);
    }
}

TEST(FileSystem, KnowsWhatExists) {
    const CUnicodeString program = FileSystem::GetProgramPath();
    CFileSystemBase& files = FileSystem::GetFileSystem(program);
    EXPECT_TRUE(files.CheckFile(program, FA_Exists)) << Readable(program.View());
    EXPECT_FALSE(files.CheckFile(program + u".missing", FA_Exists));
    EXPECT_FALSE(files.CheckFile(u"", FA_Exists));
    EXPECT_FALSE(files.CheckFile(program + u"\\", FA_Exists)) << "a closing separator names no entry";
}
