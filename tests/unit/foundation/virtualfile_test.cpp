#include "foundation/inc/virtualfile.h"

#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "platform/inc/memory.h"
#include "tests/support/memoryfile.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/virtualmodel.h"
#include <functional>
#include <limits>
#include <optional>
#include <random>

using namespace Tsx;

namespace {

constexpr std::uint32_t Both = Platform::GenericRead | Platform::GenericWrite;
constexpr std::int64_t Most = std::numeric_limits<std::int64_t>::max();

/// The sizes of the mappings, which make one range without a gap.
std::string Mappings(const CVirtualFileData& data) {
    std::string sizes;
    std::int64_t end = 0;
    for (const CVirtualMapping* mapping : data.Mappings) {
        EXPECT_EQ(mapping->Start, end);
        end += mapping->Size;
        sizes += std::to_string(mapping->Size) + ' ';
    }
    EXPECT_EQ(data.Capacity, end);
    return sizes;
}

std::uint32_t CauseOf(const std::function<void()>& action) {
    const auto failure = Raised<CFileException>(action);
    return failure ? failure->cause : 0;
}

void WriteAt(CVirtualFile& file, std::int64_t position, const std::string& bytes) {
    file.Seek(position, SeekFromStart);
    file.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

std::string ReadAt(CVirtualFile& file, std::int64_t position, std::int32_t count) {
    file.Seek(position, SeekFromStart);
    std::string bytes(static_cast<std::size_t>(count), '?');
    bytes.resize(static_cast<std::size_t>(file.Read(bytes.data(), count)));
    return bytes;
}

} // namespace

TEST(VirtualFile, TheRangeGrowsByItsRules) {
    struct Row {
        const char* name;
        std::int64_t reserve;
        std::vector<std::int64_t> positions; // of one byte each
        const char* mappings;
    };
    const Row rows[] = {{"nothing touched", 1'000'000, {}, ""},
                        {"one byte", 0, {0}, "65536 "},
                        {"a reservation is rounded up", 1'000'000, {0, 1'048'575}, "1048576 "},
                        {"half of what there is", 1'000'000, {0, 1'048'576, 1'572'864}, "1048576 524288 786432 "},
                        {"a jump is served in one step", 0, {0, 10'000'000}, "65536 9961472 "},
                        {"beyond the reservation at once", 100'000, {500'000}, "131072 393216 "},
                        {"a jump of whole units ends short", 0, {0, 131'072}, "65536 65536 65536 "}};
    for (const Row& row : rows) {
        CVirtualFileData data(u"name", 128, row.reserve);
        CVirtualFile file(Both, 0, &data);
        for (const std::int64_t position : row.positions) {
            WriteAt(file, position, "x");
            EXPECT_EQ(ReadAt(file, position, 2), "x") << row.name;
        }
        EXPECT_EQ(Mappings(data), row.mappings) << row.name;
        file.SetLength(0);
        EXPECT_EQ(Mappings(data), row.mappings) << row.name << ": nothing is given back";
    }
    CVirtualFileData data(u"name", 128, std::int64_t{0});
    data.GetMapping(0);
    const CVirtualMapping* answer = data.GetMapping(2 * ViewSize);
    EXPECT_EQ(answer->Start + answer->Size, 2 * ViewSize) << "the byte at the position is not counted";

    constexpr std::int64_t farAway = 0x1'0000'0000;
    CVirtualFileData large(u"name", 128, farAway + 3);
    CVirtualFile file(Both, 0, &large);
    WriteAt(file, farAway, "far");
    EXPECT_EQ(ReadAt(file, 0, 3), std::string(3, '\0')) << "what is 4 GiB away is no start of the range";
    EXPECT_EQ(ReadAt(file, farAway, 4), "far");

    const Platform::Handle made =
        Platform::CreateFileMapping(Platform::InvalidHandle(), nullptr, Platform::PageReadWrite, 0, 100, nullptr);
    CVirtualFileData huge(u"name", 128, made, Most / 4);
    Platform::MemoryStatus status;
    ASSERT_TRUE(Platform::GlobalMemoryStatusEx(status));
    const double growth = static_cast<double>(huge.GetMapping(Most / 4)->Size);
    EXPECT_NEAR(growth * 10 / static_cast<double>(status.availablePageFile), 1, 0.5) << "no more than memory allows";
}

TEST(VirtualFile, PositionsAndLengths) {
    CVirtualFileData data(u"name", 128, std::int64_t{0});
    CVirtualFile file(Both, 0, &data);
    file.Write("0123456789", 10);
    EXPECT_EQ(file.GetLength(), 10);
    EXPECT_TRUE(file.IsEndOfFile());
    EXPECT_EQ(file.Seek(-3, SeekFromCurrent), 7);
    file.SetLength(4);
    EXPECT_EQ(file.GetPosition(), 4) << "the new end";
    EXPECT_EQ(ReadAt(file, 6, 1), "");
    file.SetLength(8);
    EXPECT_EQ(ReadAt(file, 2, 100), "234567") << "what was cut off is there again";
    for (const std::int64_t offset : {std::int64_t{-9}, std::numeric_limits<std::int64_t>::min(), Most}) {
        file.Seek(1, SeekFromStart);
        EXPECT_EQ(CauseOf([&] { file.Seek(offset, SeekFromEnd); }), FC_BadSeek) << offset;
        EXPECT_EQ(file.GetPosition(), 0) << offset;
    }
    EXPECT_EQ(file.Seek(Most, SeekFromStart), Most) << "beyond the end is allowed";
    EXPECT_EQ(CauseOf([&] { file.Write("x", 1); }), FC_DiskFull) << "more than can be counted";
    EXPECT_EQ(file.GetLength(), 8);
    file.SetLength(Most);
    EXPECT_EQ(CauseOf([&] { ReadAt(file, Most - 1, 1); }), FC_DiskFull);

    CVirtualFile reader(Platform::GenericRead, 3, &data);
    EXPECT_EQ(CauseOf([&] { reader.Write(nullptr, 0); }), FC_SharingViolation) << "also for nothing";
    ExpectRefused({[&] { file.Write(nullptr, 1); }, [&] { file.Read(nullptr, 1); }, [&] { file.Read(&data, -1); },
                   [&] { file.Seek(0, 3); }, [&] { file.SetLength(-1); }, [&] { file.GetView(-1); },
                   [&] { data.GetMapping(-1); }});
    file.Close();
    ExpectRefused({[&] { file.SetLength(0); }, [&] { file.Write("closed", 6); }});
    EXPECT_EQ(ReadAt(reader, 0, 6), "012345");
    EXPECT_TRUE(file.Views.IsEmpty());

    CVirtualFileData readOnly(u"name", 1, std::int64_t{0});
    CVirtualFile own(Both, 0, &readOnly);
    CMemoryFile other("content");
    own.SetLength(3);
    EXPECT_EQ(ReadAt(own, 0, 3), std::string(3, '\0'));
    EXPECT_EQ(CauseOf([&] { own.Write("x", 1); }), FC_SharingViolation);
    EXPECT_EQ(CauseOf([&] { own.LoadFrom(other); }), FC_SharingViolation);
}

TEST(VirtualFile, WhoClosesLastTellsTheLength) {
    CVirtualFileData data(u"name", 128, std::int64_t{0});
    CVirtualFile reader(Platform::GenericRead, 3, &data);
    CVirtualFile writer(Both, 3, &data);
    writer.Write("0123", 4);
    EXPECT_EQ(data.Size, 4);
    EXPECT_EQ(reader.GetLength(), 0);
    writer.Close();
    EXPECT_EQ(data.Size, 4);
    reader.Close();
    EXPECT_EQ(data.Size, 0) << "as the reader has it";
}

TEST(VirtualFile, TenViewsAtMost) {
    CVirtualFileData data(u"name", 128, 20 * ViewSize);
    CVirtualFile file(Both, 0, &data);
    const auto views = [&] {
        std::string units;
        for (const CVirtualView& view : file.Views) {
            units += std::to_string(view.GetStart() / ViewSize) + ' ';
        }
        return units;
    };
    EXPECT_EQ(ReadAt(file, 0, 1), "");
    EXPECT_EQ(views(), "") << "nothing to read takes no view";
    for (std::int64_t unit = 0; unit < 11; ++unit) {
        WriteAt(file, unit * ViewSize, std::string(1, static_cast<char>('a' + unit)));
    }
    EXPECT_EQ(views(), "10 9 8 7 6 5 4 3 2 1 ") << "the one used longest ago has gone";
    EXPECT_EQ(data.Mappings[0]->Mapping->Views.GetItemCount(), 10);
    EXPECT_EQ(ReadAt(file, 0, 1), "a");
    EXPECT_EQ(views(), "0 10 9 8 7 6 5 4 3 2 ");
    EXPECT_EQ(ReadAt(file, 10 * ViewSize, 1), "k");
    EXPECT_EQ(views(), "10 0 9 8 7 6 5 4 3 2 ") << "found, and in front now";
    EXPECT_EQ(ReadAt(file, 9 * ViewSize, 1), "j");
    EXPECT_EQ(views(), "9 10 0 9 8 7 6 5 4 3 ") << "missed behind a later one: a second view";
    WriteAt(file, ViewSize - 2, "xyz"); // over a border
    EXPECT_EQ(ReadAt(file, ViewSize - 3, 5), (std::string{'\0', 'x', 'y', 'z', '\0'}));
    file.Close();
    EXPECT_TRUE(data.Mappings[0]->Mapping->Views.IsEmpty());
}

TEST(VirtualFile, HandlesOnTwoThreads) {
    CVirtualFileData data(u"name", 128, std::int64_t{0});
    OnThreads(2, [&](int thread) {
        CVirtualFile file(Both, 3, &data);
        const std::string own(1, static_cast<char>('a' + thread));
        for (std::int64_t i = 0; i < 4000; ++i) { // more views than a handle keeps, and a range that grows at first
            const std::int64_t position = (i % 200 * 2 + thread) * ViewSize;
            WriteAt(file, position, own);
            ASSERT_EQ(ReadAt(file, position, 1), own) << position;
        }
    });
    EXPECT_NE(Mappings(data), "");
    for (const CVirtualMapping* mapping : data.Mappings) {
        EXPECT_TRUE(mapping->Mapping->Views.IsEmpty());
    }
}

TEST(VirtualFile, LoadsFromAndSavesToAnyFile) {
    std::string content(200'001, 'c');
    content.replace(65'535, 3, "xyz");
    for (const std::int32_t most : {1 << 20, 1000, 65'535}) { // bytes that the source gives at once
        struct CSlowFile : CMemoryFile {
            using CMemoryFile::CMemoryFile;
            std::int32_t step = 0;
            std::int32_t Read(void* buffer, std::int32_t count) override {
                return CMemoryFile::Read(buffer, std::min(count, step));
            }
        };
        CSlowFile source(content);
        source.step = most;
        source.position = 7;
        CVirtualFileData data(u"name", 128, std::int64_t{0});
        CVirtualFile file(Both, 0, &data);
        file.LoadFrom(source);
        EXPECT_EQ(source.position, 7) << most;
        EXPECT_EQ(file.GetLength(), 200'001) << most;
        file.Seek(5, SeekFromStart);
        CMemoryFile target("old and longer than nothing");
        file.SaveTo(target);
        EXPECT_EQ(file.GetPosition(), 5) << most;
        EXPECT_TRUE(target.bytes == content) << most;
    }
    struct CShortFile : CMemoryFile {
        using CMemoryFile::CMemoryFile;
        std::int64_t GetLength() const override { return 100; }
    } lying("abc");
    CVirtualFileData data(u"name", 128, std::int64_t{0});
    CVirtualFile file(Both, 0, &data);
    const auto failure = Raised<CFileException>([&] { file.LoadFrom(lying); });
    ASSERT_TRUE(failure) << "instead of waiting for ever";
    EXPECT_EQ(failure->cause, 14U);
    EXPECT_EQ(failure->fileName, u"memory.bin");
}

TEST(VirtualFile, FailuresLeaveTheOldData) {
    SKIP_WITHOUT_FAULTS();
    const std::string old(100'000, 'o');
    std::optional<CVirtualFileData> data;
    std::optional<CVirtualFile> file;
    int failures = 0;
    for (const auto& [function, code] : {std::pair("*", 1455U), std::pair("allocation", 8U)}) {
        failures += FailEachCall(
            function, code, Platform::FaultMode::Once,
            [&](std::int32_t) {
                file.reset();
                data.emplace(u"name", 128U, std::int64_t{0});
                file.emplace(Both, 0U, &*data);
                WriteAt(*file, 0, old);
            },
            [&] { WriteAt(*file, 500'000, std::string(100'000, 'n')); },
            [&](std::int32_t nth) {
                EXPECT_EQ(ReadAt(*file, 0, 100'000), old) << function << ' ' << nth;
                WriteAt(*file, 500'000, "new");
                EXPECT_EQ(ReadAt(*file, 499'999, 4), std::string("\0new", 4)) << function << ' ' << nth;
                EXPECT_NE(Mappings(*data), "");
            });
    }
    EXPECT_GE(failures, 5);
}

TEST(VirtualModel, RandomOperationsGiveTheSame) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        std::mt19937 random(seed);
        CVirtualModel model([&](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); });
        for (int step = 0; step < 12'000; ++step) {
            std::string done;
            const std::string wrong = model.Step(done);
            ASSERT_EQ(wrong, "") << "seed " << seed << ", step " << step << ", " << done;
        }
        EXPECT_EQ(model.CompareContents(), "") << "seed " << seed;
    }
}
