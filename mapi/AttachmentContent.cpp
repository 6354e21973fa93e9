#include "mapi/AttachmentContent.h"

#include "foundation/inc/errors.h"
#include <algorithm>

using namespace Tsx;

namespace Mapi {

namespace {

constexpr std::int32_t LeastBuffer = 8; // bytes, also for an empty file

} // namespace

CAttachmentContent::CAttachmentContent(const CUnicodeString& path) {
    file.Open(path, OM_Read | OM_ShareDenyWrite);
    ReadWhole(file);
}

void CAttachmentContent::ReadWhole(CBaseFile& source) {
    const std::int32_t size = source.GetLength32();
    buffer.reset(static_cast<std::uint8_t*>(AllocateFromCurrentManager(std::max(size, LeastBuffer))));
    if (source.Read(buffer.get(), size) != size) {
        GenerateFileCauseException(CauseEndOfFile, source.GetFileName());
    }
    length = static_cast<std::uint32_t>(size);
}

void* CAttachmentContent::operator new(std::size_t size) {
    return AllocateFromCurrentManager(static_cast<std::int64_t>(size));
}

} // namespace Mapi
