#include "mapi/SimpleMapiMessage.h"

#include "tests/support/text.h"
#include <string>

using namespace Tsx;

namespace {

CArray<CNamedAddress> Files(std::int32_t count) {
    CArray<CNamedAddress> files;
    for (std::int32_t i = 0; i < count; ++i) {
        const CUnicodeString number = CUnicodeString::FromInt(i);
        files.Append({u"folder\\shown " + number, u"path " + number});
    }
    return files;
}

} // namespace

TEST(SimpleMapiMessage, NothingGivenIsNullAndNotEmptyText) {
    CSimpleMapiMessage filled(u"", {}, u"", u"bob@example.org", u"", u"");
    const MapiMessage& message = filled.Record();
    EXPECT_EQ(message.lpszSubject, nullptr);
    EXPECT_EQ(message.lpszNoteText, nullptr);
    EXPECT_EQ(message.lpOriginator, nullptr);
    EXPECT_EQ(message.nRecipCount, 0U) << "an address without a name is no recipient";
    EXPECT_EQ(message.lpRecips, nullptr);
    EXPECT_EQ(message.nFileCount, 0U);
    EXPECT_EQ(message.lpFiles, nullptr);
}

TEST(SimpleMapiMessage, EveryTextOutlivesTheGrowthOfThePool) {
    constexpr std::int32_t count = 100;
    CSimpleMapiMessage filled(u"subject", Files(count), u"body", u"ann@example.org", u"Ann", u"Me");
    const MapiMessage& message = filled.Record();
    EXPECT_STREQ(message.lpszSubject, "subject");
    EXPECT_STREQ(message.lpszNoteText, "body");
    ASSERT_NE(message.lpOriginator, nullptr);
    EXPECT_STREQ(message.lpOriginator->lpszName, "Me");
    EXPECT_EQ(message.lpOriginator->lpszAddress, nullptr);
    EXPECT_EQ(message.lpOriginator->ulRecipClass, 0U);
    ASSERT_EQ(message.nRecipCount, 1U);
    EXPECT_EQ(message.lpRecips->ulRecipClass, 1U);
    EXPECT_STREQ(message.lpRecips->lpszName, "Ann");
    EXPECT_STREQ(message.lpRecips->lpszAddress, "ann@example.org");
    ASSERT_EQ(message.nFileCount, 100U);
    for (std::int32_t i = 0; i < count; ++i) {
        const MapiFileDesc& file = message.lpFiles[i];
        EXPECT_EQ(file.nPosition, 0xFFFFFFFFU);
        EXPECT_EQ(file.lpszPathName, "path " + std::to_string(i));
        EXPECT_EQ(file.lpszFileName, "shown " + std::to_string(i)) << "the folder is cut off";
    }
}

TEST(SimpleMapiMessage, AnAttachmentNeedsNameAndPath) {
    const auto fill = [](const CUnicodeString& name, const CUnicodeString& path) {
        CArray<CNamedAddress> files;
        files.Append({name, path});
        CSimpleMapiMessage(u"", files, u"", u"", u"", u"");
    };
    ExpectInternalErrors("..\\Src\\MapiMailSender", {{191, [&] { fill(u"", u"x"); }}, {192, [&] { fill(u"x", u""); }}});
}
