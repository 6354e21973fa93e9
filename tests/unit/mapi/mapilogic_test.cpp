// What is decided without a MAPI library: which store, which names, what is read from records, and what the record of
// the Simple route holds.
#include "mapi/AttachmentContent.h"
#include "mapi/FaultCleanup.h"
#include "mapi/MapiAddressList.h"
#include "mapi/MapiProperties.h"
#include "mapi/SimpleMapiMessage.h"

#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/text.h"
#include <initializer_list>
#include <string>
#include <vector>

using namespace Tsx;
using namespace Mapi;

namespace {

constexpr std::uint32_t Best = StatusPrimaryIdentity | StatusPrimaryStore;

SPropValue Number(std::uint32_t tag, std::uint32_t value) {
    SPropValue property{tag, 0, {}};
    property.Value.ul = value;
    return property;
}

SPropValue ErrorInPlaceOf(std::uint32_t tag, std::uint32_t code) {
    return Number((tag & ~PropertyTypeMask) | PropertyTypeError, code);
}

/// A table whose rows have one property each; a row without any in the place of nothing.
class CTable {
public:
    explicit CTable(std::vector<SPropValue> flags)
        : properties(std::move(flags)), bytes(sizeof(SRowSet) + properties.size() * sizeof(SRow)) {
        Rows().cRows = static_cast<std::uint32_t>(properties.size());
        for (std::uint32_t i = 0; i < Rows().cRows; ++i) {
            const bool bare = properties[i].ulPropTag == 0;
            Rows().aRow[i] = {0, bare ? 0U : 1U, bare ? nullptr : &properties[i]};
        }
    }
    SRowSet& Rows() { return *reinterpret_cast<SRowSet*>(bytes.data()); }

private:
    std::vector<SPropValue> properties;
    std::vector<char> bytes;
};

} // namespace

TEST(MapiLogic, ChooseStoreRow) {
    const SPropValue bare{};
    const SPropValue tempting = ErrorInPlaceOf(TagResourceFlags, Best | StatusDefaultStore);
    const auto flags = [](std::uint32_t value) { return Number(TagResourceFlags, value); };
    const struct {
        const char* name;
        std::vector<SPropValue> rows;
        std::int32_t chosen;
    } table[] = {
        {"no rows", {}, -1},
        {"default, then primary", {flags(StatusDefaultStore), flags(Best)}, 1},
        {"primary, then default", {flags(Best), flags(StatusDefaultStore)}, 0},
        {"two primary", {flags(Best), flags(0), flags(Best | StatusDefaultStore), flags(0)}, 2},
        {"two default", {flags(0), flags(StatusDefaultStore), flags(StatusDefaultStore)}, 1},
        {"halves of primary", {flags(StatusPrimaryIdentity), flags(StatusPrimaryStore)}, -1},
        {"half of primary that is default", {flags(StatusPrimaryIdentity | StatusDefaultStore)}, 0},
        {"other flags among them", {flags(0xFFFFFFFF)}, 0},
        {"errors and bare rows", {tempting, bare, flags(StatusDefaultStore), bare, tempting}, 2},
        {"another property of the same value", {Number(TagResourceType, Best)}, -1},
    };
    for (const auto& row : table) {
        EXPECT_EQ(ChooseStoreRow(CTable(row.rows).Rows()), row.chosen) << row.name;
    }
}

TEST(MapiLogic, RecipientDisplayName) {
    const struct {
        const char16_t *name, *address, *shown;
    } table[] = {
        {u"Ann Lee", u"ann@x", u"Ann Lee[ann@x]"}, {u"", u"ann", u"[ann]"}, {u"Ann", u"", u"Ann"}, {u"", u"", u""}};
    for (const auto& row : table) {
        EXPECT_EQ(RecipientDisplayName(row.name, row.address), CUnicodeString(row.shown));
    }
}

TEST(MapiLogic, APropertyIsReadOnlyUnderItsOwnTag) {
    char16_t text[] = u"IPM.Note";
    std::uint8_t id[] = {1, 2, 3};
    SPropValue properties[] = {ErrorInPlaceOf(TagAccess, 7), Number(TagMessageFlags, 0xFFFFFFFF), {}, {}, {}};
    properties[2] = {TagMessageClass, 0, {}};
    properties[2].Value.lpszW = text;
    properties[3] = {TagEntryId, 0, {}};
    properties[3].Value.bin = {3, id};
    properties[4] = {TagSubject, 0, {}}; // a text that is null
    const CPropertyReader reader(properties, 5);
    EXPECT_EQ(reader.Number(TagAccess), 0U);
    EXPECT_EQ(reader.Number(TagMessageFlags), 0xFFFFFFFFU);
    EXPECT_EQ(reader.Text(TagMessageClass), text);
    EXPECT_STREQ(Readable(reader.Text(TagSubject)).c_str(), Readable(u"").c_str());
    EXPECT_EQ(reader.EntryId(TagEntryId).lpb, id);
    const auto expectNothing = [](const CPropertyReader& empty) {
        EXPECT_EQ(empty.Number(TagMessageFlags), 0U);
        EXPECT_EQ(*empty.Text(TagMessageClass), u'\0');
        const auto raised = Raised<CCOMException>([&] { static_cast<void>(empty.EntryId(TagEntryId)); });
        EXPECT_TRUE(raised && raised->hresult == ResultUnexpected);
    };
    expectNothing(CPropertyReader(properties, 1));
    expectNothing(CPropertyReader(nullptr, 5));
}

TEST(MapiLogic, CheckResult) {
    for (const std::int32_t good : {0, 1, 0x40380, 0x7FFFFFFF}) {
        CheckResult(good);
    }
    EXPECT_TRUE(Raised<CMemoryException>([] { CheckResult(ResultOutOfMemory); }));
    for (const std::int32_t bad : {ResultFail, ResultUserCancel, -1, std::int32_t{-0x7FFFFFFF - 1}}) {
        const auto raised = Raised<CCOMException>([&] { CheckResult(bad); });
        EXPECT_TRUE(raised && raised->hresult == bad) << bad;
    }
}

TEST(MapiLogic, AttachmentContent) {
    const CTestFolder folder;
    const struct {
        const char* name;
        std::string bytes;
    } table[] = {{"empty", ""},
                 {"one byte", std::string(1, '\0')},
                 {"8 bytes", "12345678"},
                 {"1 MiB", std::string(1 << 20, 'x')}};
    for (const auto& row : table) {
        folder.Write(u"file", row.bytes);
        const CAttachmentContent content(folder / u"file");
        const SBinary data = content.Data();
        EXPECT_EQ(data.lpb == nullptr, row.bytes.empty()) << row.name;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.lpb), data.cb), row.bytes) << row.name;
        CFile file;
        file.Open(folder / u"file", OM_Read | OM_ShareDenyNone);
        file.Close();
        EXPECT_TRUE(Raised<CFileException>([&] { file.Open(folder / u"file", OM_Write | OM_ShareDenyNone); }))
            << row.name << ": nobody may write to it meanwhile";
    }
    CFile().Open(folder / u"file", OM_Write | OM_ShareExclusive);
    const auto raised = Raised<CFileException>([&] { const CAttachmentContent missing(folder / u"none"); });
    EXPECT_TRUE(raised && raised->cause == 2);
}

TEST(MapiLogic, AnAttachmentThatChangesWhileItIsRead) {
    struct CChangingFile : CMemoryFile {
        std::int64_t told = 0;
        std::int64_t GetLength() const override { return told; }
    };
    constexpr std::uint32_t endOfFile = 14;
    constexpr std::uint32_t tooLong = 1; // an internal error
    const struct {
        const char* name;
        std::int64_t told;
        const char* content;
        std::uint32_t failure;
        const char* taken;
    } table[] = {
        {"as told", 4, "1234", 0, "1234"},           {"grown", 4, "123456", 0, "1234"},
        {"grown from nothing", 0, "12", 0, ""},      {"shrunk by a byte", 4, "123", endOfFile, ""},
        {"shrunk to nothing", 4, "", endOfFile, ""}, {"2 GiB", std::int64_t{1} << 31, "", tooLong, ""},
        {"no length", -1, "", tooLong, ""},
    };
    for (const auto& row : table) {
        CChangingFile file;
        file.bytes = row.content;
        file.told = row.told;
        std::string taken;
        const auto read = [&] {
            const CFileBytes bytes = ReadWholeFile(file);
            taken.assign(reinterpret_cast<const char*>(bytes.Data().lpb), bytes.Data().cb);
        };
        if (row.failure == tooLong) {
            const auto raised = Raised<CInternalError>(read);
            EXPECT_TRUE(raised && raised->line == 56) << row.name;
        } else if (row.failure != 0) {
            const auto raised = Raised<CFileException>(read);
            EXPECT_TRUE(raised && raised->cause == row.failure && raised->fileName == u"memory.bin") << row.name;
        } else {
            read();
            EXPECT_EQ(file.reads, 1) << row.name;
        }
        EXPECT_EQ(taken, row.taken) << row.name;
    }
}

TEST(MapiLogic, AFaultLeavesNothingHeld) {
    static std::string released;
    struct CThing {
        char name;
        static void Release(CThing* thing) { released += thing->name; }
    };
    using CHeldThing = CHeld<CThing, CThing>;
    CThing a{'a'};
    CThing b{'b'};
    CThing c{'c'};
    CThing d{'d'};
    // Frames that a fault leaves never destroy what is in them.
    alignas(CHeldThing) unsigned char frame[3][sizeof(CHeldThing)];
    {
        const CFaultCleanup outer;
        new (frame[0]) CHeldThing(&a);
        {
            const CFaultCleanup inner;
            new (frame[1]) CHeldThing(&b);
            CHeldThing detached(&c);
            { const CHeldThing orderly(&d); }
            new (frame[2]) CHeldThing(&c);
            EXPECT_EQ(detached.Detach(), &c);
        }
        EXPECT_EQ(released, "dcb") << "what was held by the end, the last one first";
        const CHeldThing orderly(&d);
    }
    EXPECT_EQ(released, "dcbda");
    const CHeldThing unguarded(&a);
    EXPECT_EQ(CFaultCleanup::Current(), nullptr);
}

TEST(MapiLogic, WhatIsNotGivenIsAFailure) {
    struct CNothing {
        static void Release(CNothing*) {}
    };
    CHeld<CNothing, CNothing> held;
    held.Receive([](CNothing**) { return 0; });
    const auto missing = Raised<CCOMException>([&] { static_cast<void>(held.operator->()); });
    EXPECT_TRUE(missing && missing->hresult == ResultPointer);
}

TEST(SimpleMapiMessage, NothingGivenIsNullAndNotEmptyText) {
    CSimpleMapiMessage filled(u"", {}, u"", u"bob@example.org", u"", u"");
    const MapiMessage& message = filled.Record();
    EXPECT_TRUE(!message.lpszSubject && !message.lpszNoteText && !message.lpOriginator && !message.lpFiles);
    EXPECT_TRUE(!message.lpRecips && message.nRecipCount == 0) << "an address without a name is no recipient";
}

TEST(SimpleMapiMessage, EveryTextOutlivesTheGrowthOfThePool) {
    constexpr std::int32_t count = 100;
    CArray<CNamedAddress> files;
    for (std::int32_t i = 0; i < count; ++i) {
        const CUnicodeString number = CUnicodeString::FromInt(i);
        files.Append({u"folder\\shown " + number, u"path " + number});
    }
    CSimpleMapiMessage filled(u"subject", files, u"body", u"ann@example.org", u"Ann", u"Me");
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
