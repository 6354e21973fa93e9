#include "mapi/AttachmentContent.h"

#include "foundation/inc/errors.h"
#include <algorithm>

using namespace Tsx;

namespace Mapi {

CFileBytes ReadWholeFile(CBaseFile& file) {
    constexpr std::int32_t leastBuffer = 8; // bytes, also for an empty file
    const std::int32_t size = file.GetLength32();
    CFileBytes bytes;
    bytes.buffer.reset(static_cast<std::uint8_t*>(AllocateFromCurrentManager(std::max(size, leastBuffer))));
    if (file.Read(bytes.buffer.get(), size) != size) {
        GenerateFileCauseException(FC_EndOfFile, file.GetFileName());
    }
    bytes.length = static_cast<std::uint32_t>(size);
    return bytes;
}

CAttachmentContent::CAttachmentContent(const CUnicodeString& path) {
    file.Open(path, OM_Read | OM_ShareDenyWrite);
    bytes = ReadWholeFile(file);
}

void* CAttachmentContent::operator new(std::size_t size) {
    return AllocateFromCurrentManager(static_cast<std::int64_t>(size));
}

} // namespace Mapi
