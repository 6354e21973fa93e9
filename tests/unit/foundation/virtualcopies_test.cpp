// Copies and moves with an end in memory, and what is left when they fail.
#include "platform/inc/faults.h"
#include "tests/support/folder.h"
#include "tests/support/virtualfiles.h"
#include <memory>

using namespace Tsx;

namespace {

class VirtualCopies : public testing::Test {
protected:
    void TearDown() override {
        Platform::DisarmFaults();
        System().ReleaseAll();
    }
};

} // namespace

TEST_F(VirtualCopies, CopiesAndMovesAcrossTheBorder) {
    const CTestFolder folder;
    std::string content(150'000, 'c');
    content.replace(65'530, 10, "0123456789");
    struct Row {
        const char* name;
        bool fromVirtual;
        bool toVirtual;
        bool move;
    };
    for (const Row& row : {Row{"within", true, true, false}, Row{"out", true, false, false},
                           Row{"in", false, true, false}, Row{"move within", true, true, true},
                           Row{"move out", true, false, true}, Row{"move in", false, true, true}}) {
        const CUnicodeString source = row.fromVirtual ? Path(u"d\\source") : folder / u"source";
        const CUnicodeString target = row.toVirtual ? Path(u"e\\target") : folder / u"target";
        for (const char* before : {"", "an older content that is replaced"}) {
            Write(source, content);
            if (*before != '\0') {
                Write(target, before);
                FileSystem::GetFileSystem(target).SetAttributes(target, row.toVirtual ? 1 : 128); // of no account here
            }
            row.move ? System().MoveFile(target, source) : System().CopyFile(target, source);
            EXPECT_TRUE((row.toVirtual ? Content(target) : folder.Content(u"target")) == content) << row.name;
            const bool gone = !FileSystem::GetFileSystem(source).CheckFile(source, FA_Exists);
            EXPECT_EQ(gone, row.move) << row.name;
        }
        FileSystem::GetFileSystem(target).DeleteFile(target);
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { System().CopyFile(folder / u"a", folder / u"b"); }));
    EXPECT_TRUE(Raised<CInternalError>([&] { System().MoveFile(folder / u"a", folder / u"b"); }));
    Write(Path(u"f"), "f");
    System().RenameFile(Path(u"f"), Path(u"g"));
    EXPECT_EQ(Code([] { System().MoveFileOnVolume(Path(u"g"), Path(u"G")); }), 32U) << "onto itself";
    EXPECT_EQ(Content(Path(u"g")), "f");
    EXPECT_EQ(Code([] { System().CopyFile(Path(u"h"), Path(u"f")); }), 2U);
    EXPECT_EQ(Content(Path(u"h")), "(missing)");
}

TEST_F(VirtualCopies, CopiesThatFailLoseNothing) {
    const CTestFolder folder;
    const std::string content(150'000, 'c');
    const CUnicodeString native = folder / u"native";
    const auto holdOpen = [](const CUnicodeString& path) {
        Write(path, "old");
        auto held = std::make_unique<CFile>();
        held->Open(path, OM_Read | OM_ShareExclusive);
        return held;
    };
    Write(Path(u"source"), content);
    {
        const auto held = holdOpen(native);
        EXPECT_EQ(Code([&] { System().MoveFile(native, Path(u"source")); }), 1005U) << "the target is open elsewhere";
        const auto virtualHeld = holdOpen(Path(u"held"));
        EXPECT_EQ(Code([&] { System().MoveFile(Path(u"held"), Path(u"source")); }), 32U);
    }
    EXPECT_EQ(folder.Content(u"native"), "old");
    EXPECT_EQ(Content(Path(u"held")), "old");
    EXPECT_EQ(Code([&] { System().MoveFile(folder / u"none\\f", Path(u"source")); }), 1003U);
    EXPECT_TRUE(Content(Path(u"source")) == content);
    if (!Platform::FaultsAvailable()) {
        return;
    }
    // The disk is full at the n-th call of any kind, once or from then on; or it takes all but says that it took less.
    struct Row {
        const char* function;
        Platform::FaultMode mode;
    };
    for (const Row& row :
         {Row{"*", Platform::FaultMode::Once}, Row{"*", Platform::FaultMode::FromThenOn},
          Row{"WriteFile", Platform::FaultMode::FromThenOn}, Row{"CloseHandle", Platform::FaultMode::Once},
          Row{"allocation", Platform::FaultMode::FromThenOn}}) {
        for (const bool out : {true, false}) {
            const CUnicodeString source = out ? Path(u"source") : native;
            const CUnicodeString target = out ? native : Path(u"target");
            for (std::int32_t nth = 1, seen = nth; seen >= nth; ++nth) {
                FileSystem::GetFileSystem(target).TryDeleteFile(target);
                Write(source, content);
                Platform::ArmFault(row.function, nth, 112, row.mode);
                try {
                    System().MoveFile(target, source);
                } catch (CException* exception) {
                    delete exception;
                }
                seen = Platform::FaultCallsSeen();
                Platform::DisarmFaults();
                const std::string left = out ? folder.Content(u"native") : Content(target);
                const std::string kept = out ? Content(source) : folder.Content(u"native");
                EXPECT_TRUE(left == content || kept == content) << row.function << ' ' << nth << (out ? " out" : " in");
                // Where every call fails the half file cannot be deleted either; one that could not be opened is empty.
                EXPECT_TRUE(left == content || left == "(missing)" || left.empty() ||
                            row.mode == Platform::FaultMode::FromThenOn)
                    << row.function << ' ' << nth << (out ? " out" : " in");
            }
        }
    }
    Write(Path(u"source"), "twelve bytes");
    Platform::ArmShortTransfers(5);
    System().CopyFile(native, Path(u"source"));
    Platform::DisarmFaults();
    EXPECT_EQ(folder.Content(u"native"), "twelve bytes");
}
