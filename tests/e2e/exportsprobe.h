// Asks a loaded program for its message table through its exported functions and compares the answers with the list.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace ExportsProbe {

struct Functions {
    std::uint32_t (*GetResourceID)(const char16_t*);
    std::int32_t (*NumberOfMessages)();
    const char16_t* (*GetMessageName)(std::int32_t);
    std::uint32_t (*GetMessageSystemVersion)();
};

struct Row {
    std::uint32_t id;
    const char16_t* name;
    const char* printable;
};

constexpr Row Rows[] = {
#define ROW(id, name, use, text) {id, u## #name, #name},
#include "tests/support/catalogue.inc"
#undef ROW
};

/// Prints what is wrong and returns the number of faults.
inline int Check(const Functions& functions) {
    int faults = 0;
    const auto expect = [&faults](bool holds, const char* what, const char* where) {
        if (!holds) {
            std::printf("%s: %s\n", what, where);
            ++faults;
        }
    };
    if (!functions.GetResourceID || !functions.NumberOfMessages || !functions.GetMessageName ||
        !functions.GetMessageSystemVersion) {
        std::puts("an export is missing");
        return 1;
    }
    expect(functions.GetMessageSystemVersion() == 200, "version of the interface", "not 200");
    expect(functions.NumberOfMessages() == static_cast<std::int32_t>(std::size(Rows)), "number of messages", "wrong");
    for (std::int32_t i = 0; faults == 0 && i < functions.NumberOfMessages(); ++i) {
        const Row& row = Rows[i];
        expect(std::u16string_view(functions.GetMessageName(i)) == row.name, "name of the row", row.printable);
        expect(functions.GetResourceID(row.name) == row.id, "id of the name", row.printable);
    }
    for (const char16_t* unknown : {u"", u"MSG_ASSERT", u"err_bad_archive", u"ERR_BAD_ARCHIV", u"ZZZ"}) {
        expect(functions.GetResourceID(unknown) == 0, "id of a name that is not in the table", "not 0");
    }
    return faults;
}

} // namespace ExportsProbe
