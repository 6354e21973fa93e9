// Strings against the standard library's: long random runs, with the block looked at after each step; threads; sorting.
#include "foundation/inc/stringsort.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/memory.h"
#include "tests/support/recordinghandler.h"
#include <random>

using namespace Tsx;

namespace {

struct CProbe : CUnicodeString {
    static const CStringBlock<char16_t>* BlockOf(const CUnicodeString& text) { return text.*&CProbe::block; }
};

void ExpectSoundBlock(const CUnicodeString& text) {
    const auto* block = CProbe::BlockOf(text);
    ASSERT_EQ(block->Characters[block->Length], u'\0');
    const bool isEmptyOne = block == &EmptyStringBlock<char16_t>;
    ASSERT_TRUE(isEmptyOne ? block->RefCount == 2 && block->BlockSize == 2 : block->RefCount >= 1);
    ASSERT_TRUE(isEmptyOne || block->BlockSize >= 2 * block->Length + 14);
    ASSERT_TRUE(isEmptyOne || block->BlockSize > 128 || block->BlockSize == 32 || block->BlockSize == 64 ||
                block->BlockSize == 128);
}

template <class TString>
void AppendBeyondTheLargestLength(std::int32_t largest) {
    TString text;
    text.GetBuffer(largest);
    text.SetLength(largest);
    text.Append('x');
}

void AppendOwnHalf(CUnicodeString& text) {
    text.Append(text.Text() + text.Length() / 2, text.Length() - text.Length() / 2);
}

void WriteIntoBuffer(CUnicodeString& text, std::int32_t more) {
    const std::int32_t length = text.Length();
    *text.GetBuffer(length + more + 1) = u'#';
    text.SetLength(length);
}

} // namespace

TEST(StringBlocks, SizesOfTheClasses) {
    EXPECT_TRUE(Raised<CMemoryException>([] { AppendBeyondTheLargestLength<CUnicodeString>(0x3FFFFFF8); }));
    EXPECT_TRUE(Raised<CMemoryException>([] { AppendBeyondTheLargestLength<CString>(0x7FFFFFF2); }));
    for (const auto& [length, blockSize] :
         {std::pair(9U, 32), {10, 64}, {25, 64}, {26, 128}, {57, 128}, {58, 130}, {1000, 2014}}) {
        const CUnicodeString text(std::u16string(length, u'x').c_str());
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
}

TEST(StringModel, BehavesAsTheStandardOne) {
    constexpr unsigned seed = 1971;
    std::mt19937 random(seed);
    constexpr std::size_t count = 8;
    std::vector<CUnicodeString> ours(count);
    std::vector<std::u16string> model(count);
    std::size_t i = 0;
    std::size_t j = 0;
    std::int32_t n = 0;
    std::size_t twinsN = 0; // the same
    constexpr std::u16string_view digits = u"0123456789012345678901234567890123456789";
    // Each row does the same to a string, from another that may be itself, and to its twin.
    const std::pair<std::function<void()>, std::function<void()>> operations[] = {
        {[&] { ours[i].Clear(); }, [&] { model[i].clear(); }},
        {[&] { ours[i] = ours[j]; }, [&] { model[i] = model[j]; }},
        {[&] { ours[i] += ours[j]; }, [&] { model[i] += std::u16string(model[j]); }},
        {[&] { ours[i] = ours[j] + ours[i]; }, [&] { model[i] = model[j] + model[i]; }},
        {[&] { std::swap(ours[i], ours[j]); }, [&] { std::swap(model[i], model[j]); }},
        {[&] { ours[i].Append(digits[twinsN % 10]); }, [&] { model[i] += digits[twinsN % 10]; }},
        {[&] { AppendOwnHalf(ours[i]); }, [&] { model[i] += std::u16string(model[i].substr(model[i].size() / 2)); }},
        {[&] { ours[i].Assign(digits.data(), n % 41); }, [&] { model[i] = digits.substr(0, twinsN % 41); }},
        {[&] { ours[i] = ours[j].Mid(n, n); },
         [&] { model[i] = model[j].substr(std::min(twinsN, model[j].size()), twinsN); }},
        {[&] { ours[i] = ours[j].Right(n); },
         [&] { model[i] = model[j].substr(model[j].size() - std::min(twinsN, model[j].size())); }},
        {[&] { WriteIntoBuffer(ours[i], n); }, [&] { std::fill_n(model[i].begin(), model[i].empty() ? 0 : 1, u'#'); }}};
    for (int step = 0; step < 300000; ++step) {
        i = random() % count;
        j = random() % count;
        twinsN = random() % 70;
        n = static_cast<std::int32_t>(twinsN);
        const auto& [change, changeTwin] = operations[model[i].size() > 3000 ? 0 : random() % std::size(operations)];
        change();
        changeTwin();
        ASSERT_EQ(ours[i].View(), model[i]) << "seed " << seed << " step " << step;
        std::for_each(ours.begin(), ours.end(), &ExpectSoundBlock);
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
        std::vector<std::u16string> model(round < 1990 ? random() % 40 : 5000);
        for (std::u16string& text : model) {
            for (const auto length = random() % 3; text.size() < length;) {
                text += u"aZ\u00E9\uFFFF"[random() % 4];
            }
            strings.Append(text.c_str());
        }
        SortStrings(strings);
        std::sort(model.begin(), model.end());
        ASSERT_TRUE(std::equal(strings.begin(), strings.end(), model.begin(), model.end(),
                               [](const CUnicodeString& a, const std::u16string& b) { return a.View() == b; }))
            << "seed " << seed << " round " << round;
    }
}

TEST(DescribeAddress, NamesTheModule) {
    static const int here = 0;
    EXPECT_FALSE(Platform::QueryAddress(std::make_unique<int>().get()).module) << "a heap is no module";
    EXPECT_TRUE(CUnicodeString::DescribeAddress(&here).View().find(u"stringmodel_test") != std::u16string_view::npos);
    EXPECT_EQ(CUnicodeString::DescribeAddress(nullptr), u"0x0000000000000000");
}
