// The handles of the file system in memory: who may open what, which are open, and their end at the stop.
#include "foundation/inc/errors.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/makeobject.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/virtualfilesystem.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualhandles";

} // namespace

CBaseFile* CVirtualFileSystem::OpenFile(const CUnicodeString& path, std::uint32_t access, std::uint32_t share, void*,
                                        std::uint32_t disposition, std::uint32_t attributes,
                                        Platform::Handle templateFile, std::int64_t reserve, CFile* owner) {
    const CCriticalSectionLock guard(Lock);
    TSX_REQUIRE(FileSystem::IsVirtualPath(path), ModuleName, nullptr);
    TSX_REQUIRE(disposition >= Platform::CreateNew && disposition <= Platform::OpenAlways, ModuleName, nullptr);
    CVirtualFileData* data = FindForOpening(path, disposition);
    const std::uint32_t made =
        disposition == Platform::OpenAlways ? attributes : attributes | Platform::FileAttributeArchive;
    const auto make = [&] {
        return Root->ReplaceFileData(path, made, templateFile, reserve);
    };
    const std::uint32_t ownReadOnly = templateFile ? Platform::FileAttributeReadOnly : 0;
    if (data ? !MayOpen(*data, access) : !MayOpenAlone(made | ownReadOnly, access)) {
        if (!data && !templateFile) {
            make(); // AS DESIGNED: a file that its own maker may not write to is made, and then not opened
        }
        GenerateFileException(Platform::ErrorSharingViolation, path);
    }
    // A new body comes last: a failure leaves neither a file nor a template that is taken.
    auto file = MakeObject<CVirtualFile>(access, share);
    const CUnicodeString& name = data ? data->Name : path;
    RegisterFile(name, file.get(), owner);
    try {
        file->Open(data ? data : make());
    } catch (...) {
        ForgetFile(name, file.get());
        throw;
    }
    return file.release();
}

void CVirtualFileSystem::CloseFile(CBaseFile* file, bool abort) {
    auto* virtualFile = dynamic_cast<CVirtualFile*>(file);
    TSX_REQUIRE(virtualFile, ModuleName);
    const std::unique_ptr<CVirtualFile> closing(virtualFile);
    try {
        abort ? closing->Close() : closing->Abort();
    } catch (...) {
        UnregisterFile(virtualFile);
        throw;
    }
    UnregisterFile(virtualFile);
}

/// The file that a disposition opens as it is; null where it asks for a new one.
CVirtualFileData* CVirtualFileSystem::FindForOpening(const CUnicodeString& path, std::uint32_t disposition) const {
    CVirtualFileData* data = Root->FindFileData(path);
    if (!data && disposition == Platform::OpenExisting) {
        GenerateFileException(Platform::ErrorFileNotFound, path);
    }
    if (data && disposition == Platform::CreateNew) {
        GenerateFileException(Platform::ErrorAccessDenied, path);
    }
    if (data && disposition == Platform::CreateAlways) {
        if (HasHandles(*data)) {
            GenerateFileException(Platform::ErrorSharingViolation, path);
        }
        return nullptr;
    }
    return data;
}

/// A file that nobody has open.
bool CVirtualFileSystem::MayOpenAlone(std::uint32_t attributes, std::uint32_t access) {
    return (attributes & Platform::FileAttributeDirectory) || !(attributes & Platform::FileAttributeReadOnly) ||
           !(access & Platform::GenericWrite);
}

bool CVirtualFileSystem::MayOpen(const CVirtualFileData& data, std::uint32_t access) const {
    CFileSet* const* handles = OpenFiles.Find(data.Name);
    if (!handles || (data.Attributes & Platform::FileAttributeDirectory)) {
        return MayOpenAlone(data.Attributes, access);
    }
    const bool read = access & Platform::GenericRead;
    const bool write = access & Platform::GenericWrite;
    std::uint32_t shared = Platform::FileShareRead | Platform::FileShareWrite;
    for (const auto& handle : **handles) {
        shared &= handle.Key->Share;
    }
    return (!read || (shared & Platform::FileShareRead)) && (!write || (shared & Platform::FileShareWrite));
}

void CVirtualFileSystem::RegisterFile(const CUnicodeString& name, CVirtualFile* file, CFile* owner) {
    CFileSet** present = OpenFiles.Find(name);
    CFileSet* set = present ? *present : nullptr;
    if (!set) {
        auto fresh = MakeObject<CFileSet>();
        OpenFiles.Add(name, fresh.get());
        set = fresh.release();
    }
    try {
        set->Add(file);
        FileOwners.Add(file, owner);
    } catch (...) {
        ForgetFile(name, file);
        throw;
    }
}

void CVirtualFileSystem::UnregisterFile(CVirtualFile* file) {
    const CCriticalSectionLock guard(Lock);
    ForgetFile(file->Data->Name, file);
}

/// Takes a handle out of the tables as far as it is in them.
void CVirtualFileSystem::ForgetFile(const CUnicodeString& name, CVirtualFile* file) {
    CFileSet** found = OpenFiles.Find(name);
    TSX_REQUIRE(found, ModuleName);
    CFileSet* const set = *found;
    FileOwners.DeleteAll(file);
    set->DeleteAll(file);
    if (set->IsEmpty()) {
        OpenFiles.Delete(name);
        delete set;
    }
}

void CVirtualFileSystem::ReleaseAll() {
    const CCriticalSectionLock guard(Lock);
    std::unique_ptr<CException> failure = CloseOwners();
    if (OpenFiles.IsEmpty()) {
        Root->ForceDeleteTree(Root->Name);
    }
    if (failure) {
        throw failure.release();
    }
    TSX_ASSERT(OpenFiles.IsEmpty(), ModuleName);
}

/// Closes every file through its owner, and returns what the first of them raised. Each closing changes the table, and
/// may close or open others, so that the search begins anew.
std::unique_ptr<CException> CVirtualFileSystem::CloseOwners() {
    std::unique_ptr<CException> failure;
    CFileSet stuck; // their owners have not closed them and will not
    CVirtualFile* file = nullptr;
    while (CFile* owner = FindOwnerToClose(stuck, file)) {
        try {
            owner->Close();
        } catch (CException* exception) {
            std::unique_ptr<CException> raised(exception);
            if (failure) {
                DisplayException(raised.get());
            } else {
                failure = std::move(raised);
            }
        }
        if (FileOwners.Has(file)) {
            stuck.Set(file);
        }
    }
    return failure;
}

CFile* CVirtualFileSystem::FindOwnerToClose(const CFileSet& stuck, CVirtualFile*& file) const {
    for (const auto& open : FileOwners) {
        if (open.Value && !stuck.Has(open.Key)) {
            file = open.Key;
            return open.Value;
        }
    }
    return nullptr;
}

} // namespace Tsx
