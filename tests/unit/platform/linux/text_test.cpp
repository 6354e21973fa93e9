// Text on this system alone: names and the command line from bytes, the case of letters, what the environment's locale
// and time zone mean, what error numbers come to.
#include "foundation/inc/commandlinefo.h"
#include "platform/inc/locale.h"
#include "platform/inc/text.h"
#include "platform/inc/time.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/process/commandline.h"
#include "platform/linux/text/errortexts.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/nativetext.h"
#include "tests/support/text.h"
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <cwctype>
#include <random>

using namespace Platform;
using namespace Tsx;

TEST(NativeText, EveryByteStringIsANameOfItsOwn) {
    for (const std::string name : {"plain", "Gr\xC3\xBC\xC3\x9F", "\xF0\x9F\x98\x80", "\xFF\xFE", "a\xC3", "\xE2\x82",
                                   "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80x\xBF", "\xE2\x28\xA1"}) {
        EXPECT_EQ(NativeName(WideName(name)), name) << Readable(WideName(name));
    }
}

// The C library knows all simple mappings; those of Windows are the ones that are each other's inverse.
TEST(LetterCase, PairsAreThoseOfUnicode) {
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    int pairs = 0;
    for (unsigned c = 0; c < 0x10000; ++c) {
        const char16_t lower = DowncaseCharacter(static_cast<char16_t>(c));
        if (lower != c) {
            ++pairs;
            EXPECT_EQ(UpcaseCharacter(lower), c);
            EXPECT_TRUE(!unicode || (towlower_l(c, unicode) == lower && towupper_l(lower, unicode) == c)) << c;
        }
    }
    EXPECT_EQ(pairs, 1163) << "those of Unicode 14";
    if (unicode) {
        freelocale(unicode);
    }
}

// A shell's words must reach the program whole: joining and splitting are inverse for every list of words.
TEST(CommandLine, SplittingUndoesTheJoining) {
    constexpr std::string_view letters[] = {"a", "\"", " ", "\t", "\\", ":", "-",           "/",
                                            "@", "<",  ">", "'",  "\n", "@", "\xE3\x80\x80"};
    constexpr unsigned seed = 20011;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::string> words(1 + random() % 5);
        std::vector<const char*> arguments;
        for (std::string& word : words) {
            for (auto length = random() % 8; length > 0; --length) {
                word += letters[random() % std::size(letters)];
            }
            if (word.size() > 1 && word[0] == '@') {
                word.insert(0, "@@"); // a response file is meant to be read; two marks stand for one
                word.erase(2, word.find_first_not_of('@', 2) - 2);
            }
            arguments.push_back(word.c_str());
        }
        CArray<CUnicodeString> tokens;
        const std::u16string line = JoinArguments(static_cast<int>(arguments.size()), arguments.data());
        SplitCommandLine(tokens, line.c_str());
        std::vector<std::string> found;
        for (std::int32_t i = 0; i < tokens.Size(); ++i) {
            const bool hadTwoMarks = words.size() > found.size() && words[found.size()].starts_with("@@");
            found.push_back((hadTwoMarks ? "@" : "") + std::string(tokens[i].ToNarrow(65001).View()));
        }
        ASSERT_EQ(found, words) << "seed " << seed << " round " << round;
    }
}

TEST(Locale, LanguagesHaveTheirNumbers) {
    constexpr std::pair<const char*, std::uint32_t> rows[] = {
        {"de_DE.UTF-8", 0x407},       {"de_AT.UTF-8", 0xC07}, {"pt_BR", 0x416},
        {"pt_PT@euro", 0x816},        {"zh_TW.UTF-8", 0x404}, {"nn_NO.UTF-8", 0x814},
        {"sr_RS.UTF-8@latin", 0x81A}, {"sr_RS.UTF-8", 0xC1A}, {"no_NO.ISO8859-1", 0x414},
        {"C.UTF-8", 0x409},           {"xx_XX", 0x409},       {"design", 0x409}};
    for (const auto& [locale, lcid] : rows) {
        setenv("LC_ALL", locale, 1);
        EXPECT_EQ(GetUserDefaultLCID(), lcid) << locale;
    }
    setenv("LC_ALL", "", 1);
    setenv("LC_MESSAGES", "fr_CA.UTF-8", 1);
    setenv("LANG", "it_IT.UTF-8", 1);
    EXPECT_EQ(GetUserDefaultLCID(), 0xC0CU);
    EXPECT_EQ(GetSystemDefaultLCID(), LcidEnglishUnitedStates);
    EXPECT_EQ(GetSystemDefaultLangID(), 0xC0C);
    EXPECT_TRUE(IsValidLocale(0x1407, LcidInstalled)) << "of a country that the table lacks";
    EXPECT_FALSE(IsValidLocale(0x401, LcidInstalled)) << "no language of the table";
}

TEST(Locale, TheUsersIsThatOfAllCategoriesOrOfTheLetters) {
    setenv("LC_MESSAGES", "", 1);
    setenv("LANG", "C.UTF-8", 1);
    for (const auto& [wanted, set] : {std::pair{"", "C.UTF-8"}, {"xx_XX", "C"}}) {
        setenv("LC_TIME", wanted, 1);
        SetUserLocale();
        EXPECT_STREQ(std::setlocale(LC_TIME, nullptr), set);
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8") << set;
        std::setlocale(LC_ALL, "C");
    }
}

TEST(LocalTime, LeadsByTheZone) {
    setenv("TZ", "EAST-05:30", 1);
    tzset();
    SystemTime local{};
    FileTime moved = 0;
    GetLocalTime(local);
    EXPECT_TRUE(SystemTimeToFileTime(local, moved));
    const std::int64_t sinceEpoch = (moved - 198'000'000'000) / 10'000'000 - 11'644'473'600;
    EXPECT_LE(std::abs(sinceEpoch - std::time(nullptr)), 1);
    EXPECT_FALSE(FileTimeToLocalFileTime(INT64_MAX, moved));
    unsetenv("TZ");
    tzset();
}

TEST(ErrnoCodes, AreThoseOfWindows) {
    constexpr std::pair<int, std::uint32_t> rows[] = {
        {EACCES, 5},       {EPERM, 5},          {EBUSY, 32},       {ENOENT, 2},          {ENOTDIR, 3},
        {ELOOP, 3},        {EXDEV, 17},         {ENOTSUP, 50},     {ENFILE, 4},          {ENOMEM, 8},
        {ENOSPC, 112},     {EDQUOT, 112},       {EROFS, 19},       {ENAMETOOLONG, 206},  {EBADF, 6},
        {EPIPE, 109},      {EIO, 1117},         {EMLINK, 1142},    {ENODEV, 20},         {ENOMEDIUM, 21},
        {EBADMSG, 1392},   {ESTALE, 1006},      {ENOTCONN, 2250},  {ECONNREFUSED, 1225}, {ECONNRESET, 64},
        {ETIMEDOUT, 1460}, {ENETUNREACH, 1231}, {EHOSTDOWN, 1256}, {ENOSYS, 120},        {EXFULL, 31}};
    for (const auto& [number, code] : rows) {
        EXPECT_EQ(WindowsErrorCode(number), code) << number;
        EXPECT_FALSE(ErrorText(code).empty()) << code;
    }
}
