// Strings against the standard library's: long random runs, with the block looked at after each step; threads; sorting.
#include "foundation/inc/stringsort.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/memory.h"
#include "tests/support/recordinghandler.h"
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Tsx;

namespace {

struct CProbe : CUnicodeString {
    static const CStringBlock<char16_t>* BlockOf(const CUnicodeString& text) { return text.*&CProbe::block; }
};

void ExpectSoundBlock(const CUnicodeString& text) {
    const auto* block = CProbe::BlockOf(text);
    ASSERT_EQ(block->Characters[block->Length], u'\0');
    if (block == &EmptyStringBlock<char16_t>) {
        ASSERT_EQ(block->RefCount, 2);
        ASSERT_EQ(block->BlockSize, 2);
        return;
    }
    ASSERT_GE(block->RefCount, 1);
    ASSERT_GE(block->BlockSize, 2 * block->Length + 14);
    ASSERT_TRUE(block->BlockSize > 128 || block->BlockSize == 32 || block->BlockSize == 64 || block->BlockSize == 128);
}

} // namespace

TEST(StringBlocks, SizesOfTheClasses) {
    for (const auto& [length, blockSize] :
         {std::pair(9, 32), {10, 64}, {25, 64}, {26, 128}, {57, 128}, {58, 130}, {1000, 2014}}) {
        const CUnicodeString text(std::u16string(static_cast<std::size_t>(length), u'x').c_str());
        EXPECT_EQ(CProbe::BlockOf(text)->BlockSize, blockSize) << length;
    }
    std::string narrow;
    for (int i = 0; i < 30000; ++i) {
        narrow += "\xE2\x82\xAC";
    }
    const auto converted = CUnicodeString::FromNarrow(narrow.c_str(), 90000, 65001);
    EXPECT_EQ(CProbe::BlockOf(converted)->BlockSize, 2 * 30000 + 14) << "bytes that became no characters";
    CUnicodeString grown(std::u16string(100, u'x').c_str());
    grown.Append(u'y');
    EXPECT_EQ(CProbe::BlockOf(grown)->BlockSize, 2 * 120 + 14) << "a fifth of headroom";
    CUnicodeString shared(grown);
    EXPECT_EQ(CProbe::BlockOf(grown)->RefCount, 2);
    shared.Append(u'z');
    EXPECT_EQ(CProbe::BlockOf(grown)->RefCount, 1);
    EXPECT_EQ(grown.Length(), 101);
}

template <class TString>
void AppendBeyondTheLargestLength(std::int32_t largest) {
    TString text;
    text.GetBuffer(largest);
    text.SetLength(largest);
    text.Append('x');
}

TEST(StringBlocks, NoneIsLargerThan32SignedBits) {
    EXPECT_TRUE(Raised<CMemoryException>([] { AppendBeyondTheLargestLength<CUnicodeString>(0x3FFFFFF8); }));
    EXPECT_TRUE(Raised<CMemoryException>([] { AppendBeyondTheLargestLength<CString>(0x7FFFFFF2); }));
}

TEST(StringModel, BehavesAsTheStandardOne) {
    constexpr unsigned seed = 1971;
    std::mt19937 random(seed);
    constexpr std::size_t count = 8;
    std::vector<CUnicodeString> ours(count);
    std::vector<std::u16string> model(count);
    for (int step = 0; step < 300000; ++step) {
        const std::size_t i = random() % count;
        const std::size_t j = random() % count;
        const auto n = static_cast<std::int32_t>(random() % 70);
        CUnicodeString& text = ours[i];
        std::u16string& twin = model[i];
        switch (random() % 11) {
        case 0:
            text = ours[j];
            twin = model[j];
            break;
        case 1:
            text.Append(u'a' + static_cast<char16_t>(n));
            twin += static_cast<char16_t>(u'a' + n);
            break;
        case 2:
            text += ours[j];
            twin += std::u16string(model[j]);
            break;
        case 3:
            text = ours[j].Mid(n, n);
            twin = model[j].substr(std::min<std::size_t>(static_cast<std::size_t>(n), model[j].size()),
                                   static_cast<std::size_t>(n));
            break;
        case 4:
            text = ours[j] + ours[i];
            twin = model[j] + model[i];
            break;
        case 5:
            text = ours[j].Right(n);
            twin = model[j].substr(model[j].size() - std::min(model[j].size(), static_cast<std::size_t>(n)));
            break;
        case 6:
            text.Clear();
            twin.clear();
            break;
        case 7:
            text.Assign(u"0123456789012345678901234567890123456789", n % 41);
            twin =
                std::u16string(u"0123456789012345678901234567890123456789").substr(0, static_cast<std::size_t>(n % 41));
            break;
        case 8:
            text.GetBuffer(text.Length() + n)[0] = n > 0 || text.Length() > 0 ? u'#' : u'\0';
            if (!twin.empty()) {
                twin[0] = u'#';
            }
            text.SetLength(static_cast<std::int32_t>(twin.size()));
            break;
        case 9:
            std::swap(ours[i], ours[j]);
            std::swap(model[i], model[j]);
            break;
        default:
            text.Append(text.Text() + text.Length() / 2, text.Length() - text.Length() / 2);
            twin += std::u16string(twin.substr(twin.size() / 2));
            break;
        }
        if (twin.size() > 3000) {
            text.Clear();
            twin.clear();
        }
        ASSERT_EQ(ours[i].View(), model[i]) << "seed " << seed << " step " << step;
        for (const CUnicodeString& each : ours) {
            ExpectSoundBlock(each);
        }
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << "seed " << seed << " step " << step;
        ASSERT_EQ(ours[i] < ours[j], model[i] < model[j]);
    }
}

TEST(StringThreads, ShareCopyAndDropTheSameStrings) {
    const CUnicodeString shared(u"shared by all of them");
    OnThreads(4, [&shared](int thread) {
        std::vector<CUnicodeString> own;
        for (int i = 0; i < 20000; ++i) {
            own.push_back(i % 3 == 0 ? shared + CUnicodeString::FromInt(thread) : shared);
            if (own.size() > 50) {
                own[static_cast<std::size_t>(i) % 50] += u"!";
                own.resize(25);
            }
        }
    });
    EXPECT_EQ(CProbe::BlockOf(shared)->RefCount, 1);
}

TEST(StringSort, SortsByCharacterCodes) {
    constexpr unsigned seed = 33;
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        CArray<CUnicodeString> strings;
        std::vector<std::u16string> model;
        const auto count = round < 1990 ? random() % 40 : 5000;
        for (std::size_t i = 0; i < count; ++i) {
            std::u16string text;
            for (const auto length = random() % 3; text.size() < length;) {
                text += static_cast<char16_t>(u"aZ\u00E9\uFFFF"[random() % 4]);
            }
            strings.Append(text.c_str());
            model.push_back(text);
        }
        SortStrings(strings);
        std::sort(model.begin(), model.end());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(strings[static_cast<std::int32_t>(i)].View(), model[i]) << "seed " << seed << " round " << round;
        }
    }
}

TEST(DescribeAddress, NamesTheModule) {
    static const int here = 0;
    const auto block = std::make_unique<int>();
    for (const void* address : {static_cast<const void*>(block.get()), static_cast<const void*>(&block)}) {
        const Platform::MemoryRegion region = Platform::QueryAddress(address);
        EXPECT_TRUE(region.committed && !region.module) << "a heap and a stack are no modules";
    }
    EXPECT_TRUE(CUnicodeString::DescribeAddress(&here).View().find(u"stringmodel_test") != std::u16string_view::npos);
    const CUnicodeString nowhere = CUnicodeString::DescribeAddress(nullptr);
    EXPECT_EQ(nowhere, u"0x0000000000000000");
}
