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
    TSX_ASSERT(FileSystem::IsVirtualPath(path), ModuleName);
    CVirtualFileData* data = FindForOpening(path, disposition, attributes, templateFile, reserve);
    if (!MayOpen(*data, access)) {
        GenerateFileException(Platform::ErrorSharingViolation, path);
    }
    auto file = MakeObject<CVirtualFile>(access, share, data);
    RegisterFile(file.get(), owner);
    return file.release();
}

void CVirtualFileSystem::CloseFile(CBaseFile* file, bool abort) {
    auto* virtualFile = dynamic_cast<CVirtualFile*>(file);
    TSX_ASSERT(virtualFile, ModuleName);
    if (!virtualFile) {
        return;
    }
    const std::unique_ptr<CVirtualFile> closing(virtualFile);
    try {
        abort ? closing->Close() : closing->Abort();
    } catch (...) {
        UnregisterFile(virtualFile);
        throw;
    }
    UnregisterFile(virtualFile);
}

/// The file that a disposition stands for, made where it asks for that.
CVirtualFileData* CVirtualFileSystem::FindForOpening(const CUnicodeString& path, std::uint32_t disposition,
                                                     std::uint32_t attributes, Platform::Handle templateFile,
                                                     std::int64_t reserve) {
    TSX_ASSERT(disposition >= Platform::CreateNew && disposition <= Platform::OpenAlways, ModuleName);
    CVirtualFileData* data = Root->FindFileData(path);
    const std::uint32_t made = attributes | Platform::FileAttributeArchive;
    switch (disposition) {
    case Platform::CreateNew:
        if (data) {
            GenerateFileException(Platform::ErrorAccessDenied, path);
        }
        return Root->CreateFileData(path, made, templateFile, reserve);
    case Platform::CreateAlways:
        if (data && HasHandles(*data)) {
            GenerateFileException(Platform::ErrorSharingViolation, path);
        }
        return data ? Root->ReplaceFileData(path, made, templateFile, reserve)
                    : Root->CreateFileData(path, made, templateFile, reserve);
    case Platform::OpenAlways:
        return data ? data : Root->CreateFileData(path, attributes, templateFile, reserve);
    default:
        if (!data) {
            GenerateFileException(Platform::ErrorFileNotFound, path);
        }
        return data;
    }
}

bool CVirtualFileSystem::MayOpen(const CVirtualFileData& data, std::uint32_t access) const {
    if (data.Attributes & Platform::FileAttributeDirectory) {
        return true;
    }
    const bool read = access & Platform::GenericRead;
    const bool write = access & Platform::GenericWrite;
    CFileSet* const* handles = OpenFiles.Find(data.Name);
    if (!handles) {
        return !(write && (data.Attributes & Platform::FileAttributeReadOnly));
    }
    std::uint32_t shared = Platform::FileShareRead | Platform::FileShareWrite;
    for (const auto& handle : **handles) {
        shared &= handle.Key->Share;
    }
    return (!read || (shared & Platform::FileShareRead)) && (!write || (shared & Platform::FileShareWrite));
}

void CVirtualFileSystem::RegisterFile(CVirtualFile* file, CFile* owner) {
    const CUnicodeString& name = file->Data->Name;
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
        ForgetFile(set, file);
        throw;
    }
}

void CVirtualFileSystem::UnregisterFile(CVirtualFile* file) {
    const CCriticalSectionLock guard(Lock);
    CFileSet** set = OpenFiles.Find(file->Data->Name);
    TSX_ASSERT(set, ModuleName);
    if (set) {
        ForgetFile(*set, file);
    }
}

/// Takes a handle out of the tables as far as it is in them.
void CVirtualFileSystem::ForgetFile(CFileSet* set, CVirtualFile* file) {
    FileOwners.DeleteAll(file);
    set->DeleteAll(file);
    if (set->IsEmpty()) {
        OpenFiles.Delete(file->Data->Name);
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
