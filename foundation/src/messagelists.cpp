// The lists of messages for developers and translators: which names have no text, which texts have no name.
#include "foundation/inc/message.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/stringsort.h"
#include "foundation/inc/textstream.h"
#include "foundation/src/statics.h"
#include "platform/inc/memory.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\messagelists";

void CollectRecords(CArray<const CMessageName*>& records) {
    const CCriticalSectionLock guard(MessageListLock);
    for (const CMessageName* name = FirstMessageName(); name; name = name->Next) {
        records.Append(name);
    }
}

CUnicodeString ModulePathOf(const CMessageName* record) {
    const Platform::MemoryRegion region = Platform::QueryAddress(record);
    TSX_ASSERT(region.committed, ModuleName);
    return FileSystem::GetModulePath(region.module);
}

void WriteLine(CTextStream& stream, const CUnicodeString& line) {
    stream.WriteUnicode(line.Text(), static_cast<std::uint32_t>(line.Length()));
}

} // namespace

void CollectUndefinedMessages(CArray<CUnicodeString>& names) {
    const CRuntimeHeapSwitcher switcher;
    const CCriticalSectionLock guard(MessageListLock);
    for (const CMessageName* name = FirstMessageName(); name; name = name->Next) {
        if (!HasMessage(*name)) {
            names.Append(name->Name);
        }
    }
    SortUniqueStrings(names);
}

void CollectUnusedMessages(CArray<CUnicodeString>& names) {
    const CRuntimeHeapSwitcher switcher;
    CArray<CUnicodeString> all;
    ResourceBase.GetAllMessageNames(all);
    CArray<CUnicodeString> used;
    CArray<const CMessageName*> records;
    CollectRecords(records);
    for (const CMessageName* record : records) {
        used.Append(record->Name);
    }
    SortUniqueStrings(used);
    std::int32_t next = 0; // both lists are sorted: one walk over them
    for (const CUnicodeString& name : all) {
        while (next < used.Size() && used[next] < name) {
            ++next;
        }
        if (next == used.Size() || used[next] != name) {
            names.Append(name);
        }
    }
}

void SaveUndefinedMessagesList(const CUnicodeString& path) {
    const CRuntimeHeapSwitcher switcher;
    CArray<CUnicodeString> lines;
    CollectUndefinedMessages(lines);
    CArray<CUnicodeString> unused;
    CollectUnusedMessages(unused);
    if (!unused.IsEmpty()) {
        lines.Append(u"********** Unused messages ********");
        lines.AppendAll(unused);
    }
    try {
        WriteTextFile(path, lines);
    } catch (CFileException* exception) {
        delete exception; // a list that nobody can write must not disturb anybody
    }
}

void SaveAllMessagesList(const CUnicodeString& path) {
    const CRuntimeHeapSwitcher switcher;
    CFile file;
    file.Open(path, OM_Write | OM_ShareDenyWrite | OM_Create);
    CTextStream stream(&file, nullptr, TE_Unicode);
    WriteLine(stream, u"Name\tModule\tDefined\tUsed\r\n");
    CArray<const CMessageName*> records;
    CollectRecords(records);
    constexpr const char16_t* isTrue = u"true";
    constexpr const char16_t* isFalse = u"false";
    for (const CMessageName* record : records) {
        WriteLine(stream, CUnicodeString::Format(u"%s\t%s\t%s\t%s\r\n", record->Name, ModulePathOf(record),
                                                 HasMessage(*record) ? isTrue : isFalse, isTrue));
    }
    CArray<CUnicodeString> unused;
    CollectUnusedMessages(unused);
    for (const CUnicodeString& name : unused) {
        WriteLine(stream, CUnicodeString::Format(u"%s\t\t%s\t%s\r\n", name, isTrue, isFalse));
    }
    file.Close();
}

} // namespace Tsx
