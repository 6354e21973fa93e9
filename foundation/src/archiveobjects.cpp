// What an archive knows of classes and objects.
#include "foundation/inc/archive.h"
#include "foundation/inc/classregistry.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\archiveobjects";

bool IsAscii(const CUnicodeString& name) {
    return std::all_of(name.View().begin(), name.View().end(), [](char16_t c) { return c < 0x80; });
}

} // namespace

void CArchive::WriteClassName(const CUnicodeString& name) {
    if (const std::int32_t* known = StoredClasses.Find(name)) {
        WriteCount(*known);
        return;
    }
    const std::int32_t value = 2 * StoredClasses.GetItemCount();
    StoredClasses.Add(name, value);
    WriteCount(value + 1);
    TSX_ASSERT(IsAscii(name), ModuleName);
    WriteString(name.ToNarrow(AnsiCodePage));
}

CUnicodeString CArchive::ReadClassName(std::int32_t marker) {
    const std::int32_t index = marker >> 1;
    const bool isFirst = (marker & 1) != 0;
    const std::int32_t known = LoadedClasses.Size();
    if (isFirst ? index != known : index < 0 || index >= known) {
        return FailAsCorrupt();
    }
    if (isFirst) {
        CString name;
        ReadString(name);
        LoadedClasses.Append(CUnicodeString(name.Text(), AnsiCodePage));
    }
    return LoadedClasses[index];
}

void CArchive::WriteObject(IObject* object) {
    const CUnicodeString name = object ? GetNameOfClass(*object) : CUnicodeString();
    WriteClassName(name);
    if (!object || name.IsEmpty()) {
        return; // no object, or one whose class has no name, which has been shown
    }
    TSX_REQUIRE(Direction == AD_Store, ModuleName);
    object->Serialize(*this);
}

CHolder<IObject> CArchive::ReadObject() {
    const CUnicodeString name = ReadClassName(ReadCount());
    if (name.IsEmpty()) {
        return {};
    }
    if (!IsClassKnown(name)) {
        GenerateCheckException(ERR_BAD_ARCHIVE_VERSION, Name.Text(), u"");
        return {};
    }
    CHolder<IObject> object = CreateObject(name);
    if (!object.IsEmpty()) {
        object->Serialize(*this);
    }
    return object;
}

void CArchive::ResetClassTables() {
    StoredClasses.DeleteAll();
    LoadedClasses.FreeBuffer();
    SpareTable.DeleteAll();
}

} // namespace Tsx
