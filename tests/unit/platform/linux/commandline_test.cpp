#include "platform/linux/process/commandline.h"

#include "foundation/inc/commandlinefo.h"
#include "tests/support/text.h"
#include <random>

using namespace Tsx;

// A shell's words must reach the program whole: joining and splitting are inverse for every list of words.
TEST(CommandLine, SplittingUndoesTheJoining) {
    constexpr std::string_view alphabet = "a\" \t\\:-/@<>'\n";
    constexpr unsigned seed = 20011;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::string> words(1 + random() % 5);
        for (std::string& word : words) {
            for (std::size_t length = random() % 8; word.size() < length;) {
                word += alphabet[random() % alphabet.size()];
            }
            if (word.size() > 1 && word[0] == '@') {
                word.insert(0, "@@"); // a response file is meant to be read; two marks stand for one
                word.erase(2, word.find_first_not_of('@', 2) - 2);
            }
        }
        std::vector<const char*> arguments;
        for (const std::string& word : words) {
            arguments.push_back(word.c_str());
        }
        CArray<CUnicodeString> tokens;
        const std::u16string line = Platform::JoinArguments(static_cast<int>(arguments.size()), arguments.data());
        SplitCommandLine(tokens, line.c_str());
        ASSERT_EQ(tokens.Size(), static_cast<std::int32_t>(words.size())) << "seed " << seed << " round " << round;
        for (std::int32_t i = 0; i < tokens.Size(); ++i) {
            const std::string& word = words[static_cast<std::size_t>(i)];
            const std::string expected = word.starts_with("@@") ? word.substr(1) : word;
            ASSERT_EQ(tokens[i].ToNarrow(65001).View(), expected) << "seed " << seed << " round " << round;
        }
    }
}

TEST(CommandLine, SpacesBeyondAsciiAndBrokenBytesStayInTheirWord) {
    const char* const arguments[] = {"x\xE3\x80\x80y", "\xFF", ""};
    CArray<CUnicodeString> tokens;
    SplitCommandLine(tokens, Platform::JoinArguments(3, arguments).c_str());
    ASSERT_EQ(tokens.Size(), 3);
    EXPECT_EQ(tokens[0], u"x\u3000y");
    EXPECT_EQ(tokens[1], u"\xDCFF");
    EXPECT_EQ(tokens[2], u"");
}
