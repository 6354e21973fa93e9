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
constexpr const char16_t* TrueText = u"true";
constexpr const char16_t* FalseText = u"false";

// A record goes with its module, so that it is read under the lock alone.
template <class TVisit>
void VisitRecords(TVisit visit) {
    const CCriticalSectionLock guard(MessageListLock);
    for (const CMessageName* name = FirstMessageName(); name; name = name->Next) {
        visit(*name);
    }
}

CUnicodeString ModulePathOf(const CMessageName& record) {
    const Platform::MemoryRegion region = Platform::QueryAddress(&record);
    TSX_REQUIRE(region.committed, ModuleName, {});
    return FileSystem::GetModulePath(region.module);
}

void WriteLine(CTextStream& stream, const CUnicodeString& line) {
    stream.WriteUnicode(line.Text(), static_cast<std::uint32_t>(line.Length()));
}

} // namespace

void CollectUndefinedMessages(CArray<CUnicodeString>& names) {
    const CRuntimeHeapSwitcher switcher;
    VisitRecords([&names](const CMessageName& record) {
        if (!HasMessage(record)) {
            names.Append(record.Name);
        }
    });
    SortUniqueStrings(names);
}

void CollectUnusedMessages(CArray<CUnicodeString>& names) {
    const CRuntimeHeapSwitcher switcher;
    CArray<CUnicodeString> all;
    ResourceBase.GetAllMessageNames(all);
    CArray<CUnicodeString> used;
    VisitRecords([&used](const CMessageName& record) { used.Append(record.Name); });
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
        delete exception; // a developer's list that can't be written is dropped without a report
    }
}

void SaveAllMessagesList(const CUnicodeString& path) {
    const CRuntimeHeapSwitcher switcher;
    CFile file;
    file.Open(path, OM_Write | OM_ShareDenyWrite | OM_Create);
    CTextStream stream(&file, nullptr, TE_Unicode);
    WriteLine(stream, u"Name\tModule\tDefined\tUsed\r\n");
    CArray<CUnicodeString> lines;
    VisitRecords([&lines](const CMessageName& record) {
        lines.Append(CUnicodeString::Format(u"%s\t%s\t%s\t%s\r\n", record.Name, ModulePathOf(record),
                                            HasMessage(record) ? TrueText : FalseText, TrueText));
    });
    for (const CUnicodeString& line : lines) {
        WriteLine(stream, line);
    }
    CArray<CUnicodeString> unused;
    CollectUnusedMessages(unused);
    for (const CUnicodeString& name : unused) {
        WriteLine(stream, CUnicodeString::Format(u"%s\t\t%s\t%s\r\n", name, TrueText, FalseText));
    }
    file.Close();
}

} // namespace Tsx
