#include "foundation/inc/virtualfile.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/makeobject.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\virtualfile";

/// Beyond what 64 bits count the sum becomes negative.
std::int64_t WrappingSum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

} // namespace

CVirtualView::CVirtualView(CVirtualMapping* owner, std::int64_t offset)
    : Owner(owner), Data(owner->MapView(offset)), Offset(offset), Size(ViewSize) {}

CVirtualView::~CVirtualView() {
    GuardDestructor([this] { Unmap(); });
}

void CVirtualView::Unmap() {
    if (Data) {
        Owner->UnmapView(std::exchange(Data, nullptr));
    }
}

std::int64_t CVirtualView::GetRoom(std::int64_t position) const {
    return position < GetStart() ? 0 : std::min(GetEnd(), Owner->Start + Owner->Size) - position;
}

CVirtualFile::~CVirtualFile() {
    GuardDestructor([this] { CVirtualFile::Close(); });
}

void CVirtualFile::Open(CVirtualFileData* data) {
    TSX_REQUIRE(!IsOpen && data, ModuleName);
    Data = data;
    Length = data->LoadSize();
    IsOpen = true;
}

std::int32_t CVirtualFile::Read(void* buffer, std::int32_t count) {
    if (count == 0) {
        return 0;
    }
    TSX_REQUIRE(buffer && count > 0, ModuleName, 0);
    auto* target = static_cast<std::byte*>(buffer);
    const std::int64_t wanted = std::min<std::int64_t>(count, Length - Position);
    return static_cast<std::int32_t>(CopyThroughViews(wanted, [&](const std::byte* bytes, std::size_t size) {
        std::memcpy(target, bytes, size);
        target += size;
    }));
}

void CVirtualFile::Write(const void* buffer, std::int32_t count) {
    if ((Access & Platform::GenericWrite) == 0) {
        GenerateFileException(Platform::ErrorSharingViolation, GetFileName());
    }
    if (count == 0) {
        return;
    }
    TSX_REQUIRE(buffer && count > 0 && IsOpen, ModuleName);
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
    TSX_REQUIRE(from <= SeekFromEnd, ModuleName, Position);
    const std::int64_t base = from == SeekFromCurrent ? Position : from == SeekFromEnd ? Length : 0;
    const std::int64_t target = WrappingSum(base, offset);
    if (target < 0) {
        Position = 0;
        GenerateFileCauseException(FC_BadSeek, GetFileName());
    }
    Position = target;
    return target;
}

void CVirtualFile::SetLength(std::int64_t length) {
    TSX_REQUIRE(length >= 0 && IsOpen, ModuleName);
    Length = length;
    Position = length;
    Data->StoreSize(length);
}

void CVirtualFile::Abort() {
    GuardDestructor([this] { Close(); });
}

void CVirtualFile::Close() {
    if (!IsOpen) {
        return;
    }
    IsOpen = false;
    Data->StoreSize(std::exchange(Length, 0));
    Position = 0;
    while (CVirtualView* view = Views.GetFirst()) {
        DropView(view);
    }
}

CVirtualView* CVirtualFile::GetView(std::int64_t position) {
    TSX_REQUIRE(position >= 0, ModuleName, nullptr);
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
    if (mapping && position - mapping->Start >= mapping->Size) {
        mapping = Data->GetMapping(position); // the first one ends where the position is
    }
    if (!mapping) {
        return nullptr;
    }
    auto view = MakeObject<CVirtualView>(mapping, position / ViewSize * ViewSize - mapping->Start);
    if (!view->Data) {
        return nullptr;
    }
    Views.AddFirst(view.get());
    return view.release();
}

void CVirtualFile::SaveTo(CBaseFile& file) {
    file.SetLength(Length);
    file.Seek(0, SeekFromStart);
    for (std::int64_t offset = 0; offset < Length;) {
        const auto [bytes, count] = RequirePiece(offset, Length - offset);
        file.Write(bytes, static_cast<std::int32_t>(count));
        offset += count;
    }
}

void CVirtualFile::LoadFrom(CBaseFile& file) {
    RequireWritable();
    const std::int64_t length = file.GetLength();
    const std::int64_t position = file.GetPosition();
    file.Seek(0, SeekFromStart);
    SetLength(length);
    for (std::int64_t offset = 0; offset < length;) {
        const auto [bytes, wanted] = RequirePiece(offset, length - offset);
        const std::int32_t read = file.Read(bytes, static_cast<std::int32_t>(wanted));
        if (read <= 0) {
            GenerateFileCauseException(FC_EndOfFile, file.GetFileName());
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
    view->Unmap();
}

/// The views of a file that was made read-only cannot be written to, whatever its attributes are by now.
void CVirtualFile::RequireWritable() const {
    if (!Data->Writable) {
        GenerateFileException(Platform::ErrorSharingViolation, GetFileName());
    }
}

/// The bytes from a position on that lie in one view, `most` of them at most; none where a check failed.
CVirtualFile::CPiece CVirtualFile::GetPiece(std::int64_t position, std::int64_t most) {
    const CVirtualView* view = GetView(position);
    const std::int64_t count = view ? std::min(view->GetRoom(position), most) : 0;
    TSX_REQUIRE(count > 0, ModuleName, {});
    return {view->At(position), count};
}

/// The same for copies, which must be complete: raises where a check failed.
CVirtualFile::CPiece CVirtualFile::RequirePiece(std::int64_t position, std::int64_t most) {
    const CPiece piece = GetPiece(position, most);
    if (piece.count == 0) {
        GenerateUserException(); // the failure has been shown
    }
    return piece;
}

/// Hands the bytes from the position on to `copy`, view by view, and moves the position along. Returns their number,
/// which is smaller than `count` only where a check failed.
template <class TCopy>
std::int64_t CVirtualFile::CopyThroughViews(std::int64_t count, TCopy copy) {
    std::int64_t done = 0;
    while (done < count) {
        const CPiece piece = GetPiece(Position, count - done);
        if (piece.count == 0) {
            break;
        }
        copy(piece.bytes, static_cast<std::size_t>(piece.count));
        Position += piece.count;
        done += piece.count;
    }
    return done;
}

} // namespace Tsx
