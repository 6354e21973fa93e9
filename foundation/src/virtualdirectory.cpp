#include "foundation/inc/virtualdirectory.h"

#include "foundation/inc/debugtrace.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/makeobject.h"
#include "foundation/inc/scopeexit.h"
#include "platform/inc/fileattributes.h"
#include <optional>
#include <span>
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualdirectory";

std::unique_ptr<CVirtualFileData> NewFileData(const CUnicodeString& path, std::uint32_t attributes,
                                              Platform::Handle mapping, std::int64_t reserve) {
    return mapping ? MakeObject<CVirtualFileData>(path, attributes | Platform::FileAttributeReadOnly, mapping, reserve)
                   : MakeObject<CVirtualFileData>(path, attributes, reserve);
}

using TComponents = std::span<const CUnicodeString>;

/// The components of a path below a directory; none at all for a path that cannot lie there.
std::optional<TComponents> SplitBelow(const CUnicodeString& directory, const CUnicodeString& path,
                                      CArray<CUnicodeString>& parts) {
    CArray<CUnicodeString> own;
    FileSystem::SplitPath(path, parts);
    FileSystem::SplitPath(directory, own);
    TSX_REQUIRE(own.Size() <= parts.Size(), ModuleName, std::nullopt);
    return TComponents(parts.begin() + own.Size(), parts.end());
}

/// Reports a leak: an object that its maker has not deleted.
/// AS DESIGNED: "sustem"; whoever searches traces for this line searches for that spelling.
void TraceLeftover(const CUnicodeString& name) {
    DebugTrace(u"Undeleted object in virtual file sustem: %s\n", name);
}

} // namespace

CVirtualDirectory::CVirtualDirectory(const CUnicodeString& name)
    : CVirtualFileBase(name, Platform::FileAttributeDirectory) {}

CVirtualDirectory::~CVirtualDirectory() {
    for (const auto& file : Files) {
        delete file.Value;
    }
}

CVirtualDirectory* CVirtualDirectory::FindDirectory(const CUnicodeString& path) {
    CArray<CUnicodeString> parts;
    const auto below = SplitBelow(Name, path, parts);
    CVirtualDirectory* directory = below ? this : nullptr;
    for (const CUnicodeString& part : below.value_or(TComponents())) {
        directory = directory ? directory->GetSubDirectory(part) : nullptr;
    }
    return directory;
}

CVirtualDirectory* CVirtualDirectory::CreateDirectoryPath(const CUnicodeString& path) {
    CArray<CUnicodeString> parts;
    const auto below = SplitBelow(Name, path, parts);
    CVirtualDirectory* directory = below ? this : nullptr;
    for (const CUnicodeString& part : below.value_or(TComponents())) {
        CVirtualDirectory* next = directory->GetSubDirectory(part);
        if (!next) {
            auto fresh = MakeObject<CVirtualDirectory>(FileSystem::MergeName(directory->Name, part));
            directory->Directories.Add(part, fresh.get());
            next = fresh.release();
            directory->AddLast(next);
        }
        directory = next;
    }
    return directory;
}

CVirtualDirectory::CFilePlace CVirtualDirectory::FindPlace(const CUnicodeString& path) {
    CFilePlace place{FindDirectory(FileSystem::GetPath(path)), FileSystem::GetNameAndExt(path)};
    place.file = place.directory ? place.directory->Files.Find(place.name) : nullptr;
    return place;
}

CVirtualFileData* CVirtualDirectory::FindFileData(const CUnicodeString& path) {
    const CFilePlace place = FindPlace(path);
    return place.file ? *place.file : nullptr;
}

CVirtualFileData* CVirtualDirectory::CreateFileData(const CUnicodeString& path, std::uint32_t attributes,
                                                    Platform::Handle mapping, std::int64_t reserve) {
    CVirtualFileData* present = FindFileData(path);
    return present ? present : ReplaceFileData(path, attributes, mapping, reserve);
}

CVirtualFileData* CVirtualDirectory::ReplaceFileData(const CUnicodeString& path, std::uint32_t attributes,
                                                     Platform::Handle mapping, std::int64_t reserve) {
    CFilePlace place = FindPlace(path);
    if (!place.directory && !(place.directory = CreateDirectoryPath(FileSystem::GetPath(path)))) {
        GenerateUserException(); // the failure has been shown
    }
    CFileMap& files = place.directory->Files;
    if (!place.file) {
        files.Add(place.name, nullptr); // before the file is made: it takes over `mapping`, and may not be dropped then
        place.file = files.Find(place.name);
    }
    const CScopeExit dropUnused([&] {
        if (!*place.file) {
            files.Delete(place.name);
        }
    });
    auto fresh = NewFileData(path, attributes, mapping, reserve);
    const std::unique_ptr<CVirtualFileData> old(std::exchange(*place.file, fresh.get()));
    return fresh.release();
}

bool CVirtualDirectory::DeleteFileData(const CUnicodeString& path) {
    const CFilePlace place = FindPlace(path);
    if (!place.file) {
        return false;
    }
    const std::unique_ptr<CVirtualFileData> owner(*place.file);
    place.directory->Files.Delete(place.name);
    return true;
}

bool CVirtualDirectory::DeleteDirectoryObject(const CUnicodeString& path) {
    CVirtualDirectory* directory = FindDirectory(path);
    if (!directory || directory == this) {
        return false;
    }
    CArray<CUnicodeString> parts;
    FileSystem::SplitPath(path, parts);
    directory->GetParent()->Directories.Delete(parts[parts.Size() - 1]);
    delete directory;
    return true;
}

void CVirtualDirectory::ForceDeleteTree(const CUnicodeString& path) {
    if (CVirtualDirectory* directory = FindDirectory(path)) {
        directory->DeleteEntries();
    }
}

/// One step of FindDirectory.
CVirtualDirectory* CVirtualDirectory::GetSubDirectory(const CUnicodeString& name) {
    CVirtualDirectory** found = Directories.Find(name);
    if (!found) {
        return nullptr;
    }
    TSX_REQUIRE(*found && (*found)->GetParent() == this, ModuleName, nullptr);
    return *found;
}

/// By tables and lists rather than by attributes, in which SetStatus may have cleared the directory bit.
void CVirtualDirectory::DeleteEntries() {
    for (auto file = Files.begin(); file != Files.end();) {
        const CUnicodeString name = file->Key; // a copy, for the table's own is deleted with its node
        TraceLeftover(file->Value->Name);
        const std::unique_ptr<CVirtualFileData> owner((file++)->Value);
        Files.Delete(name);
    }
    for (CVirtualDirectory& directory : GetChildren()) {
        TraceLeftover(directory.Name);
        directory.DeleteEntries();
    }
    Directories.DeleteAll();
    DeleteAll();
}

} // namespace Tsx
