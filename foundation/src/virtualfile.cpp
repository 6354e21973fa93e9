#include "foundation/inc/virtualfile.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/makeobject.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <algorithm>
#include <cstring>
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualfile";

constexpr std::uint32_t CauseBadSeek = 9; // ERR_FILE_BAD_SEEK

/// Beyond what 64 bits count the sum becomes negative.
std::int64_t WrappingSum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

} // namespace

CVirtualView::CVirtualView(CVirtualMapping* owner, void* data, std::int64_t offset)
    : Owner(owner), Data(data), Offset(offset), Size(ViewSize) {
    TSX_ASSERT(owner && data && offset >= 0 && Size > 0, ModuleName);
}

std::int64_t CVirtualView::GetRoom(std::int64_t position) const {
    return position < GetStart() ? 0 : std::min(GetEnd(), Owner->Start + Owner->Size) - position;
}

CVirtualFile::CVirtualFile(std::uint32_t access, std::uint32_t share, CVirtualFileData* data)
    : Access(access), Share(share), Data(data), Length(data->LoadSize()) {}

CVirtualFile::~CVirtualFile() {
    GuardDestructor([this] { CVirtualFile::Close(); });
}

std::int32_t CVirtualFile::Read(void* buffer, std::int32_t count) {
    if (count == 0) {
        return 0;
    }
    const bool possible = buffer && count > 0;
    TSX_ASSERT(possible, ModuleName);
    const std::int64_t wanted = possible ? std::min<std::int64_t>(count, Length - Position) : 0;
    auto* target = static_cast<std::byte*>(buffer);
    CopyThroughViews(wanted, [&](const std::byte* bytes, std::size_t size) {
        std::memcpy(target, bytes, size);
        target += size;
    });
    return static_cast<std::int32_t>(std::max<std::int64_t>(wanted, 0));
}

void CVirtualFile::Write(const void* buffer, std::int32_t count) {
    if ((Access & Platform::GenericWrite) == 0) {
        GenerateFileException(Platform::ErrorSharingViolation, GetFileName());
    }
    if (count == 0) {
        return;
    }
    const bool possible = buffer && count > 0;
    TSX_ASSERT(possible, ModuleName);
    if (!possible) {
        return;
    }
    RequireWritable();
    if (Position > std::numeric_limits<std::int64_t>::max() - count) {
        GenerateFileException(Platform::ErrorDiskFull, GetFileName());
    }
    const std::int64_t end = Position + count;
    if (end > Length) {
        const std::int64_t start = Position;
        SetLength(end);
        Position = start;
    }
    const auto* source = static_cast<const std::byte*>(buffer);
    CopyThroughViews(count, [&](std::byte* bytes, std::size_t size) {
        std::memcpy(bytes, source, size);
        source += size;
    });
    TSX_ASSERT(Position == end, ModuleName);
}

std::int64_t CVirtualFile::Seek(std::int64_t offset, std::uint32_t from) {
    TSX_ASSERT(from <= SeekFromEnd, ModuleName);
    const std::int64_t base = from == SeekFromCurrent ? Position : from == SeekFromEnd ? Length : 0;
    const std::int64_t target = WrappingSum(base, offset);
    if (target < 0) {
        Position = 0;
        GenerateFileCauseException(CauseBadSeek, GetFileName());
    }
    Position = target;
    return target;
}

void CVirtualFile::SetLength(std::int64_t length) {
    const bool possible = length >= 0 && IsOpen;
    TSX_ASSERT(possible, ModuleName);
    if (possible) {
        Length = length;
        Position = length;
        Data->StoreSize(length);
    }
}

void CVirtualFile::Abort() {
    GuardDestructor([this] { Close(); });
}

void CVirtualFile::Close() {
    if (!IsOpen) {
        return;
    }
    IsOpen = false;
    while (CVirtualView* view = Views.GetFirst()) {
        DropView(view);
    }
    Data->StoreSize(Length);
    Length = 0;
    Position = 0;
}

CVirtualView* CVirtualFile::GetView(std::int64_t position) {
    TSX_ASSERT(position >= 0, ModuleName);
    if (CVirtualView* view = FindView(position)) {
        if (view != Views.GetFirst()) {
            view->Unlink();
            Views.AddFirst(view);
        }
        return view;
    }
    if (Views.CountNodes() == MostViews) {
        DropView(Views.GetLast());
    }
    CVirtualMapping* mapping = Data->GetMapping(position);
    if (position - mapping->Start >= mapping->Size) {
        mapping = Data->GetMapping(position); // the first one ends where the position is
    }
    const std::int64_t offset = position / ViewSize * ViewSize - mapping->Start;
    void* data = mapping->MapView(offset);
    try {
        Views.AddFirst(MakeObject<CVirtualView>(mapping, data, offset).release());
    } catch (...) {
        mapping->Mapping->UnmapView(data);
        throw;
    }
    return Views.GetFirst();
}

void CVirtualFile::SaveTo(CBaseFile& file) {
    file.SetLength(Length);
    file.Seek(0, SeekFromStart);
    for (std::int64_t offset = 0; offset < Length;) {
        const CVirtualView* view = GetView(offset);
        const std::int64_t count = std::min(view->GetRoom(offset), Length - offset);
        TSX_ASSERT(count > 0, ModuleName);
        file.Write(view->At(offset), static_cast<std::int32_t>(count));
        // A full disk may take a part and say nothing: only the position tells. What is left is offered once more, and
        // then refused.
        const std::int64_t reached = file.GetPosition();
        if (reached <= offset || reached > offset + count) {
            GenerateFileException(Platform::ErrorDiskFull, file.GetFileName());
        }
        offset = reached;
    }
}

void CVirtualFile::LoadFrom(CBaseFile& file) {
    RequireWritable();
    const std::int64_t length = file.GetLength();
    const std::int64_t position = file.GetPosition();
    file.Seek(0, SeekFromStart);
    SetLength(length);
    for (std::int64_t offset = 0; offset < length;) {
        const CVirtualView* view = GetView(offset);
        const std::int64_t wanted = std::min(view->GetRoom(offset), length - offset);
        TSX_ASSERT(wanted > 0, ModuleName);
        const std::int32_t read = file.Read(view->At(offset), static_cast<std::int32_t>(wanted));
        if (read <= 0) {
            GenerateFileCauseException(CauseEndOfFile, file.GetFileName());
        }
        offset += read;
    }
    file.Seek(position, SeekFromStart);
}

/// The view that holds a position, if the walk comes to it.
CVirtualView* CVirtualFile::FindView(std::int64_t position) const {
    for (CVirtualView& view : Views) {
        if (position < view.GetStart()) {
            return nullptr;
        }
        if (position < view.GetEnd()) {
            return &view;
        }
    }
    return nullptr;
}

void CVirtualFile::DropView(CVirtualView* view) {
    const std::unique_ptr<CVirtualView> owner(view); // leaves the list and goes, also if the mapping doesn't know it
    view->Unlink();
    view->Owner->Mapping->UnmapView(view->Data);
}

/// The views of a file that was made read-only cannot be written to, whatever its attributes are by now.
void CVirtualFile::RequireWritable() const {
    if (!Data->Writable) {
        GenerateFileException(Platform::ErrorSharingViolation, GetFileName());
    }
}

/// Hands the bytes from the position on to `copy`, view by view, and moves the position along.
template <class TCopy>
void CVirtualFile::CopyThroughViews(std::int64_t count, TCopy copy) {
    while (count > 0) {
        const CVirtualView* view = GetView(Position);
        const std::int64_t part = std::min(count, view->GetRoom(Position));
        TSX_ASSERT(part > 0, ModuleName);
        if (part <= 0) {
            return;
        }
        copy(view->At(Position), static_cast<std::size_t>(part));
        Position += part;
        count -= part;
    }
}

} // namespace Tsx
