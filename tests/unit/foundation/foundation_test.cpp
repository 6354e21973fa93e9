// The life of the foundation, and the values that each thread has for itself.
#include "foundation/inc/foundation.h"

#include "foundation/inc/classregistry.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/message.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/threadobject.h"
#include "foundation/inc/unicodecharset.h"
#include "foundation/inc/virtualfilesystem.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"

using namespace Tsx;

namespace {

std::int32_t starts = 0;
std::int32_t stops = 0;

void AddNotingModule() {
    AddStaticModule(
        nullptr, [] { ++starts; }, [] { ++stops; });
}

template <class T>
struct CProbe : CThreadObject<T> {
    std::int32_t GetIndex() const { return this->Index; }
    std::int32_t RecordCount() {
        const CCriticalSectionLock guard(this->Lock);
        return this->Records.Size();
    }
};

} // namespace

TEST(Foundation, NestedStartsDoTheWorkOnce) {
    AddNotingModule();
    ExceptionsEnabled = false;
    for (std::int32_t round = 1; round <= 2; ++round) {
        EXPECT_TRUE(InitializeFoundation(nullptr, u"Software\\Elsewhere"));
        EXPECT_TRUE(InitializeFoundation(u"ignored", u"ignored"));
        EXPECT_EQ(UserRegistryPath + u' ' + MachineRegistryPath,
                  u"Software\\Ostrel\\foundation_test Software\\Elsewhere");
        DeinitializeFoundation();
        EXPECT_TRUE(GetFoundationState() == FS_Initialised && starts == round && stops == round - 1);
        DeinitializeFoundation();
        EXPECT_TRUE(GetFoundationState() == FS_Stopped && starts == round && stops == round);
        DeinitializeFoundation(); // one too many does nothing
    }
    EXPECT_FALSE(ExceptionsEnabled) << "as it was found";
    ExceptionsEnabled = true;
    ModuleList.RemoveAll();
}

TEST(Foundation, StartsModulesThatComeLater) {
    starts = stops = 0;
    ASSERT_TRUE(InitializeFoundation(nullptr, nullptr));
    AddNotingModule();
    EXPECT_EQ(starts, 0);
    EXPECT_TRUE(InitializeFoundation(nullptr, nullptr));
    EXPECT_EQ(starts, 1) << "with the next start";
    AddNotingModule();
    EXPECT_TRUE(TryLoadModule(TestFile(SOME_LIBRARY).Text()));
    EXPECT_EQ(starts, 2) << "or with the next library";
    DeinitializeFoundation();
    DeinitializeFoundation();
    EXPECT_EQ(stops, 2);
    EXPECT_FALSE(Platform::GetModuleHandle(TestFile(SOME_LIBRARY).Text()));
    ModuleList.RemoveAll();
}

TEST(Foundation, TheStopReleasesWhatIsLeft) {
    const CTestFolder folder;
    ASSERT_TRUE(InitializeFoundation(nullptr, nullptr));
    TemporaryFiles.Set(folder.Write(u"temporary"));
    TemporaryFiles.Set(folder / u"missing");
    TemporaryDirectories.Set(folder / u"missing");
    CNativeFileSystem::GetSpecialFolder(SF_AppData);
    const CUnicodeString left = CVirtualFileSystem::GetRootName() + u"left";
    CFile file;
    file.Open(left, OM_Write | OM_ShareExclusive | OM_Create);
    DeinitializeFoundation();
    EXPECT_EQ(folder.Content(u"temporary"), "(missing)");
    EXPECT_TRUE(TemporaryFiles.IsEmpty() && TemporaryDirectories.IsEmpty()) << "whether they could go or not";
    EXPECT_FALSE(file.IsOpen() || FileSystem::GetFileSystem(left).CheckFile(left, FA_Exists));
    EXPECT_TRUE(SpecialFolders.IsEmpty());
}

// Each table loses rows, or is damaged, where two threads change it without its lock; a slot is given out twice.
TEST(Foundation, TablesTakeWhatTwoThreadsPutIn) {
    constexpr int each = 2000;
    OnThreads(2, [](int thread) {
        for (int i = 0; i < each; ++i) {
            AddStaticModule(nullptr, nullptr, nullptr);
            RegisterClassModule(CUnicodeString::Format(u"Class %d %d", thread, i), u"module");
            SetUserRegistryPath(std::u16string(100 + static_cast<std::size_t>(i) % 50, u'x').c_str());
            CNativeFileSystem::SetTemporaryFolder(std::u16string(100 + static_cast<std::size_t>(i) % 50, u'x').c_str());
            const CUnicodeCharSet letters(u"aeiou\u0394");
            const CMessageName name(u"MSG_OF_A_THREAD");
            for (int j = 0; j < 100; ++j) {
                MemoryExceptionPool.ReleaseSlot(static_cast<CMemoryException*>(MemoryExceptionPool.TakeSlot()));
            }
            if (i % 100 == 0) {
                CNativeFileSystem::ClearSpecialFolders();
            }
            EXPECT_FALSE(CNativeFileSystem::GetSpecialFolder(SF_AppData).IsEmpty());
        }
    });
    EXPECT_EQ(ModuleList.Size(), 2 * each);
    for (int i = 0; i < 2 * each; ++i) {
        ASSERT_TRUE(IsClassKnown(CUnicodeString::Format(u"Class %d %d", i % 2, i / 2))) << i;
    }
    ModuleList.RemoveAll();
    CNativeFileSystem::SetTemporaryFolder(u"");
    for (const CMessageName* name = FirstMessageName(); name; name = name->Next) {
        EXPECT_TRUE(!name->Next || name->Next->Prev == name);
        EXPECT_NE(std::u16string_view(name->Name), u"MSG_OF_A_THREAD");
    }
}

TEST(ThreadObject, EachThreadHasItsOwnZeroedValue) {
    static CProbe<std::uint64_t> early;
    static CProbe<int> between;
    static CProbe<int> late;
    *early.Get() = 7;
    std::thread([] {
        EXPECT_TRUE(!early.Find() && *early.Get() == 0);
        *early.Get() = 8;
        *between.Get() = *late.Get() = 3;
    }).join();
    *late.Get() = 9;
    EXPECT_TRUE(*early.Find() == 7 && !between.Find()) << "in an array that has grown, with a null in between";
}

TEST(ThreadObject, RacingThreadsGetOneIndex) {
    for (int round = 0; round < 50; ++round) {
        CProbe<int> family;
        CProbe<int> other;
        OnThreads(4, [&](int thread) {
            *family.Get() = thread;
            EXPECT_EQ(*family.Get(), thread);
        });
        other.Get();
        EXPECT_EQ(other.GetIndex(), family.GetIndex() + 1) << "one index was taken";
    }
}

TEST(ThreadObject, ANewThreadClearsTheRecordsOfFinishedOnesOfItsFamily) {
    static CProbe<int> family;
    static CProbe<int> untouched;
    for (int i = 0; i < 3; ++i) {
        std::thread([i] {
            i == 1 ? untouched.Get() : nullptr;
            family.Get();
        }).join();
        EXPECT_EQ(family.RecordCount(), 1) << "the ones before are gone";
    }
    EXPECT_EQ(untouched.RecordCount(), 1) << "another family's first use";
    family.Get();
    EXPECT_EQ(family.RecordCount(), 1) << "only this thread is alive";
}
