#include "foundation/inc/modulelist.h"

#include "foundation/inc/DllTools.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/programidentity.h"
#include "foundation/inc/versioninfo.h"
#include "foundation/src/statics.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"

using namespace Tsx;

namespace {

/// The entries that were called, a letter each.
std::string calls;

template <char letter>
void Note() {
    calls += letter;
}

void FailToStart() {
    Note<'F'>();
    GenerateLastErrorException(Platform::ErrorAccessDenied);
}

/// Leaves the list as it was found.
class ModuleListTest : public testing::Test {
protected:
    ~ModuleListTest() override {
        TerminateModules();
        ModuleList.RemoveAll();
        LibrarySearchPath.Clear();
        calls.clear();
    }
};

struct CLibrary : CDll {
    using CDll::Handle;
    using CDll::Ownership;
};

const CUnicodeString Library = TestFile(SOME_LIBRARY);

} // namespace

TEST_F(ModuleListTest, CountsLoadsAndUnloadsThemAll) {
    const Platform::Module module = TryLoadModule(Library.Text());
    ASSERT_TRUE(module);
    LibrarySearchPath = u"Z:\\no such folder;" + FileSystem::GetPath(Library);
    EXPECT_EQ(LoadModule(FileSystem::GetNameAndExt(Library).Text()), module);
    ASSERT_EQ(ModuleList.Size(), 1);
    EXPECT_TRUE(ModuleList[0].loadCount == 2 && !ModuleList[0].initialized) << "the foundation does not stand";
    TerminateModules();
    EXPECT_TRUE(!Platform::GetModuleHandle(Library.Text()) && ModuleList.IsEmpty());

    const Platform::Module held = LoadLibrarySearched(Library.Text());
    EXPECT_EQ(TryLoadModule(Library.Text()), held);
    TerminateModules();
    ASSERT_EQ(ModuleList.Size(), 1) << "somebody else holds it";
    EXPECT_EQ(ModuleList[0].loadCount, 0);
    Platform::FreeLibrary(held);
}

TEST_F(ModuleListTest, TellsWhatIsMissing) {
    for (const auto& [name, code] :
         {std::pair(u"no such library.dll", 2U), {u"Z:\\no such folder\\lib.dll", 126U}, {u"", 87U}}) {
        const auto failure = Raised<CCheckException>([name = name] { LoadModule(name); });
        EXPECT_TRUE(failure && failure->param0 == name && failure->param1 == GetLastErrorText(code)) << code;
    }
    EXPECT_TRUE(ModuleList.IsEmpty());
}

TEST_F(ModuleListTest, EntriesAreCalledOnceInOrderAndBackwardsAtTheEnd) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    AddStaticModule(Platform::GetProgramModule(), &Note<'a'>, &Note<'x'>);
    AddStaticModule(nullptr, nullptr, nullptr);
    AddStaticModule(nullptr, &Note<'b'>, &Note<'y'>);
    EXPECT_TRUE(InitializeModules() && InitializeModules());
    TerminateModules();
    TerminateModules();
    EXPECT_EQ(std::exchange(calls, ""), "abyx");
    AddStaticModule(nullptr, &FailToStart, &FailToStart);
    AddStaticModule(nullptr, &Note<'c'>, &Note<'z'>);
    EXPECT_FALSE(InitializeModules());
    EXPECT_EQ(calls, "abF") << "those that are linked in can start again; a failure ends the walk up";
    EXPECT_TRUE(InitializeModules()) << "each is tried once";
    TerminateModules();
    EXPECT_EQ(calls, "abFczFyx") << "but not the walk down";
    EXPECT_EQ(handler.texts.size(), 2U);
}

TEST(Dll, OwnsWhatItLoaded) {
    CLibrary library;
    for (const std::int32_t ownership : {1, 0}) {
        library.Load(Library.Text());
        const Platform::Module module = library.Handle;
        EXPECT_EQ(std::exchange(library.Ownership, ownership), 1);
        library.Free();
        library.Free();
        EXPECT_FALSE(library.IsLoaded());
        EXPECT_EQ(Platform::GetModuleHandle(Library.Text()), ownership == 1 ? nullptr : module);
    }
    Platform::FreeLibrary(Platform::GetModuleHandle(Library.Text()));
}

TEST(Dll, TellsWhatIsMissing) {
    CLibrary library;
    const auto noLibrary = Raised<CLastErrorException>([&library] { library.Load(u"no such library.dll"); });
    EXPECT_TRUE(noLibrary && noLibrary->code == 126);
    library.Load(Library.Text());
    const auto noEntry = Raised<CCheckException>([&library] { library.GetProcedure("NoSuchEntry"); });
    EXPECT_EQ(noEntry ? noEntry->param0 : u"", FileSystem::GetModulePath(library.Handle) + u" (NoSuchEntry)");
    EXPECT_TRUE(Raised<CInternalError>([&library] { library.Load(u"any"); })) << "it is loaded";
}

TEST(ProgramIdentity, IsWhatTheRecordSaysOrTheTitle) {
    CVersionInfo own;
    own.Load(FileSystem::GetProgramPath());
    EXPECT_EQ(IdentifyProgram(own, u"tool").RegistryPath, u"Software\\Ostrel\\Corvane\\5.00");
    const CProgramIdentity bare = IdentifyProgram(CVersionInfo(), u"tool");
    EXPECT_TRUE(bare.RegistryPath == u"Software\\Ostrel\\tool" && !bare.HasLogo);
}
