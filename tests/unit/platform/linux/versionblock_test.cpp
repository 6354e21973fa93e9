#include "platform/linux/modules/versionblock.h"

#include "tests/support/text.h"
#include <random>
#include <vector>

using namespace Platform;

namespace {

constexpr VersionString Strings[] = {{u"A", u"first"}, {u"InternalName", u""}, {u"Odd", u"ab"}};

std::vector<std::byte> Block() {
    FixedFileInfo fixed{};
    fixed.dwSignature = 0xFEEF04BD;
    const auto bytes = VersionBlockBuilder<512>().Build(fixed, 0x040904B0, u"040904b0", Strings);
    return {bytes.begin(), bytes.end()};
}

constexpr std::u16string_view Paths[] = {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040904B0\\Odd",
                                         u"\\StringFileInfo\\040904b0\\A", u"\\StringFileInfo\\040904b0\\None"};

} // namespace

TEST(VersionBlock, FindsWhatWasBuilt) {
    const std::vector<std::byte> block = Block();
    const void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_TRUE(QueryVersionBlock(block, Paths[2], value, length));
    EXPECT_EQ(length, 3U) << "the terminator counts";
    EXPECT_EQ(std::u16string_view(static_cast<const char16_t*>(value)), u"ab");
    ASSERT_TRUE(QueryVersionBlock(block, Paths[1], value, length));
    EXPECT_EQ(*static_cast<const std::uint16_t*>(value), 0x0409) << "the language comes first";
    EXPECT_FALSE(QueryVersionBlock(block, Paths[4], value, length));
}

TEST(VersionBlock, LengthsThatLieNeverLeadOutside) {
    constexpr unsigned seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::byte> block = Block();
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            block[random() % block.size()] = static_cast<std::byte>(random() % 256);
        }
        block.resize(random() % (block.size() + 1));
        block.shrink_to_fit();
        for (const std::u16string_view path : Paths) {
            const void* value = nullptr;
            std::uint32_t length = 0;
            if (QueryVersionBlock(block, path, value, length) && length > 0) {
                const auto* first = static_cast<const std::byte*>(value);
                ASSERT_TRUE(first >= block.data() && first + length <= block.data() + block.size())
                    << "seed " << seed << " round " << round;
            }
        }
    }
}
