#include "mapi/MapiEntries.h"

#include "tests/unit/mapi/providerfixture.h"
#include <bit>
#include <functional>

using namespace Mapi;
using Platform::RegDword;
using Platform::RegSz;

TEST(MapiEntries, AreBoundWhenCalledAndAgainForANewLibrary) {
    const CFixture fixture;
    constexpr auto failed = static_cast<std::int32_t>(0x80004005);
    const auto pointer = [](auto* null, std::uintptr_t value) { return std::bit_cast<decltype(null)>(value); };
    struct EntryRow {
        std::string note;
        std::function<std::int64_t()> call;
        std::int64_t without;
        std::int64_t with = 77;
    };
    const auto silent = [](auto call) {
        return [call] {
            call();
            return std::int64_t{0};
        };
    };
    void* const one = pointer(static_cast<void*>(nullptr), 1);
    void* const two = pointer(static_cast<void*>(nullptr), 2);
    auto** const session = pointer(static_cast<IMAPISession**>(nullptr), 5);
    auto* const table = pointer(static_cast<IMAPITable*>(nullptr), 1);
    auto* const tags = pointer(static_cast<SPropTagArray*>(nullptr), 2);
    auto* const restriction = pointer(static_cast<SRestriction*>(nullptr), 3);
    auto* const order = pointer(static_cast<SSortOrderSet*>(nullptr), 4);
    auto** const rowSets = pointer(static_cast<SRowSet**>(nullptr), 6);
    auto* const rowSet = pointer(static_cast<SRowSet*>(nullptr), 1);
    auto* const list = pointer(static_cast<ADRLIST*>(nullptr), 1);
    auto* const object = pointer(static_cast<IMAPIProp*>(nullptr), 1);
    auto** const properties = pointer(static_cast<SPropValue**>(nullptr), 3);
    auto* const property = pointer(static_cast<SPropValue*>(nullptr), 2);
    const EntryRow rows[] = {
        {"mapiinitialize 1", [&] { return MAPIInitialize(one); }, failed},
        {"mapiuninitialize", silent([] { MAPIUninitialize(); }), 0, 0},
        {"mapilogonex 9 1 2 4 5", [&] { return MAPILogonEx(9, one, two, 4, session); }, failed},
        {"mapiallocatebuffer 9 5", [&] { return MAPIAllocateBuffer(9, reinterpret_cast<void**>(session)); }, failed},
        {"mapifreebuffer 2", [&] { return MAPIFreeBuffer(two); }, 0},
        {"hrqueryallrows 1 2 3 4 5 6", [&] { return HrQueryAllRows(table, tags, restriction, order, 5, rowSets); },
         failed},
        {"freeprows 1", silent([&] { FreeProws(rowSet); }), 0, 0},
        {"freepadrlist 1", silent([&] { FreePadrlist(list); }), 0, 0},
        {"hrgetoneprop 1 7 3", [&] { return HrGetOneProp(object, 7, properties); }, failed},
        {"hrsetoneprop 1 2", [&] { return HrSetOneProp(object, property); }, failed},
    };
    fixture.Set({Machine, AppPath, u"", RegDword, u""}); // ends every search
    for (const EntryRow& row : rows) {
        EXPECT_EQ(row.call(), row.without) << row.note;
    }
    fixture.Make(u"Client\\ex.dll");
    fixture.Make(u"Client\\plain.dll");
    fixture.Set(DefaultClient);
    for (const Value& value : {ClientPath, ClientPathEx}) {
        fixture.Set(value);
        LocateMapiModule();
        fixture.TakeNotes();
        for (const EntryRow& row : rows) {
            EXPECT_EQ(row.call(), row.with) << row.note;
            EXPECT_EQ(fixture.TakeNotes(), std::vector{row.note});
        }
        Forget(); // the entries of the first library are gone now, and a call of one would not end well
    }
    for (const EntryRow& row : rows) {
        fixture.Set({Machine, Mail, u"", RegSz, u"Gone"});
        EXPECT_EQ(row.call(), row.without) << row.note;
    }
}
