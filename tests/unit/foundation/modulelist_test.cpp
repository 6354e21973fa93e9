#include "foundation/inc/modulelist.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"
#include "foundation/src/statics.h"
#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

/// The entries that were called, a letter each.
std::string calls;

template <char letter>
void Note() {
    calls += letter;
}

void FailToStart() {
    calls += 'F';
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

const CUnicodeString Library = TestFile(SOME_LIBRARY);

} // namespace

TEST_F(ModuleListTest, CountsLoadsAndUnloadsThemAll) {
    const Platform::Module module = TryLoadModule(Library.Text());
    ASSERT_TRUE(module);
    LibrarySearchPath = u"Z:\\no such folder;" + FileSystem::GetPath(Library);
    EXPECT_EQ(LoadModule(FileSystem::GetNameAndExt(Library).Text()), module);
    ASSERT_EQ(ModuleList.Size(), 1);
    EXPECT_EQ(ModuleList[0].loadCount, 2);
    EXPECT_FALSE(ModuleList[0].initialized) << "the foundation does not stand";
    TerminateModules();
    EXPECT_FALSE(Platform::GetModuleHandle(Library.Text()));
    EXPECT_TRUE(ModuleList.IsEmpty());
}

TEST_F(ModuleListTest, WhatSomebodyElseHoldsStaysWithoutACount) {
    const Platform::Module module = LoadLibrarySearched(Library.Text());
    ASSERT_TRUE(module);
    EXPECT_TRUE(ModuleList.IsEmpty()) << "the caller's own";
    EXPECT_EQ(TryLoadModule(Library.Text()), module);
    TerminateModules();
    ASSERT_EQ(ModuleList.Size(), 1);
    EXPECT_EQ(ModuleList[0].loadCount, 0);
    Platform::FreeLibrary(module);
}

TEST_F(ModuleListTest, APathInAnotherCaseIsNotTakenInItsPlace) {
    const CTestFolder folder;
    folder.Write(u"res\\some.dll", "no library");
    const CUnicodeString path = folder.Write(u"Res\\Some.dll"); // where case does not count, the same file
    ASSERT_TRUE(Platform::CopyFile(Library.Text(), path.Text(), false));
    const Platform::Module module = LoadLibrarySearched(path.Text());
    EXPECT_TRUE(module) << Platform::GetLastError();
    Platform::FreeLibrary(module);
}

TEST_F(ModuleListTest, TellsWhatIsMissing) {
    struct Row {
        const char16_t* name;
        std::uint32_t error;
    };
    for (const Row& row : {Row{u"no such library.dll", 2}, Row{u"Z:\\no such folder\\lib.dll", 126}, Row{u"", 87}}) {
        EXPECT_FALSE(TryLoadModule(row.name)) << Readable(row.name);
        EXPECT_EQ(Platform::GetLastError(), row.error) << Readable(row.name);
        const auto failure = Raised<CCheckException>([&row] { LoadModule(row.name); });
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->param0, row.name);
        EXPECT_EQ(failure->param1, GetLastErrorText(row.error));
    }
    EXPECT_TRUE(ModuleList.IsEmpty());
}

TEST_F(ModuleListTest, EntriesAreCalledOnceInOrderAndBackwardsAtTheEnd) {
    AddStaticModule(Platform::GetProgramModule(), &Note<'a'>, &Note<'x'>);
    AddStaticModule(nullptr, nullptr, nullptr);
    AddStaticModule(Platform::GetProgramModule(), &Note<'b'>, &Note<'y'>);
    EXPECT_TRUE(InitializeModules());
    EXPECT_TRUE(InitializeModules());
    TerminateModules();
    TerminateModules();
    EXPECT_EQ(calls, "abyx");
    EXPECT_EQ(ModuleList.Size(), 3) << "modules that are linked in stay, and can start again";
}

TEST_F(ModuleListTest, AFailureIsShownAndEndsTheWalkUpButNotTheWalkDown) {
    AddStaticModule(nullptr, &Note<'a'>, &Note<'x'>);
    AddStaticModule(nullptr, &FailToStart, &FailToStart);
    AddStaticModule(nullptr, &Note<'b'>, &Note<'y'>);
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    EXPECT_FALSE(InitializeModules());
    EXPECT_EQ(calls, "aF");
    EXPECT_EQ(handler.texts.size(), 1U);
    EXPECT_TRUE(InitializeModules()) << "each is tried once";
    TerminateModules();
    EXPECT_EQ(calls, "aFbyFx");
    EXPECT_EQ(handler.texts.size(), 2U);
}
