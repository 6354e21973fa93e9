// An open virtual file: a handle with its own position, its own idea of the length, and a few views of the body.
#pragma once

#include "foundation/inc/basefile.h"
#include "foundation/inc/virtualfiledata.h"
#include <cstddef>

namespace Tsx {

/// One mapped view, from its construction until Unmap or its end.
class CVirtualView : public CListNode<CVirtualView>, public CAllocatedOn<RuntimeHeap> {
public:
    CVirtualView(CVirtualMapping* owner, std::int64_t offset);
    /// Unmaps; a failure is shown.
    ~CVirtualView() override;

    void Unmap();

    /// The file's offset of the first byte, and of the first one behind the view.
    std::int64_t GetStart() const { return Owner->Start + Offset; }
    std::int64_t GetEnd() const { return GetStart() + Size; }
    /// How many bytes from a position on can be reached. A mapping made elsewhere may end inside its last view; 0 or
    /// less is outside.
    std::int64_t GetRoom(std::int64_t position) const;
    /// The byte at a position of the file.
    std::byte* At(std::int64_t position) const { return static_cast<std::byte*>(Data) + (position - GetStart()); }

    CVirtualMapping* const Owner; // not owned, never null
    void* Data;                   // the first byte; null where a check failed, and after Unmap
    const std::int64_t Offset;    // in Owner
    const std::int64_t Size;      // always ViewSize
};

/// What CVirtualFileSystem::OpenFile gives out; see CBaseFile. Views lie on the ViewSize grid of the file. A failed
/// mapping raises CMemoryException or CLastErrorException; what was there before stays readable. Serves one thread at a
/// time, beside which other threads may use other handles on the same file: of bytes that one writes while another
/// reads or writes them, either may arrive. Callers only read the fields.
class CVirtualFile : public CBaseFile, public CAllocatedOn<RuntimeHeap> {
public:
    /// Closed, until Open.
    CVirtualFile(std::uint32_t access, std::uint32_t share) : Access(access), Share(share) {}
    CVirtualFile(std::uint32_t access, std::uint32_t share, CVirtualFileData* data) : CVirtualFile(access, share) {
        Open(data);
    }
    /// Closes; a failure is shown.
    ~CVirtualFile() override;

    /// At the start of a body, which must outlive the handle.
    void Open(CVirtualFileData* data);

    CUnicodeString GetFileName() const override { return Data->Name; }
    std::int32_t Read(void* buffer, std::int32_t count) override;
    /// A handle that was not opened for writing, or a file that was made read-only, is a sharing violation, the former
    /// also for 0 bytes.
    void Write(const void* buffer, std::int32_t count) override;
    std::int64_t GetPosition() const override { return Position; }
    /// May go beyond the end. Before the start the position becomes 0 and cause 9 is raised.
    std::int64_t Seek(std::int64_t offset, std::uint32_t from) override;
    /// Leaves the position at the new end.
    /// AS DESIGNED: nothing is freed or cleared. Bytes that have been cut off are there again after an extension.
    void SetLength(std::int64_t length) override;
    std::int64_t GetLength() const override { return Length; }
    /// Closes; a failure is shown.
    void Abort() override;
    void Flush() override {} // there is no medium to reach
    /// AS DESIGNED: the file takes the length that this handle knows, so that whichever handle closes last decides. A
    /// reader opened before a writer extended the file cuts it back.
    void Close() override;

    /// Ten views at most; the one used longest ago goes. Good until the next call; null where a check failed.
    /// AS DESIGNED: the search stops at the first view that lies behind the position, although views are in order of
    /// use: one further down is missed, and the same bytes are mapped twice, which does no harm.
    CVirtualView* GetView(std::int64_t position);

    /// Makes another file's content that of this one. The position does not move.
    void SaveTo(CBaseFile& file);
    /// Makes the content of another file, which keeps its position, that of this one. Cause 14 if it ends before the
    /// length that it tells.
    void LoadFrom(CBaseFile& file);

    std::uint32_t Access; // as for CreateFile
    std::uint32_t Share;
    CVirtualFileData* Data = nullptr; // not owned
    bool IsOpen = false;
    CList<CVirtualView> Views; // the one used last comes first
    std::int64_t Length = 0;   // of the file, as this handle knows it
    std::int64_t Position = 0;

private:
    static constexpr std::size_t MostViews = 10;

    struct CPiece {
        std::byte* bytes = nullptr;
        std::int64_t count = 0;
    };

    CPiece GetPiece(std::int64_t position, std::int64_t most);
    CPiece RequirePiece(std::int64_t position, std::int64_t most);
    CVirtualView* FindView(std::int64_t position) const;
    void DropView(CVirtualView* view);
    void RequireWritable() const;

    template <class TCopy>
    std::int64_t CopyThroughViews(std::int64_t count, TCopy copy);
};

} // namespace Tsx
