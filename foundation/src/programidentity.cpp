#include "foundation/inc/programidentity.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"

namespace Tsx {

CProgramIdentity IdentifyProgram(const CVersionInfo& record, const CUnicodeString& title) {
    CProgramIdentity program;
    const CUnicodeString internalName = record.GetString(u"InternalName");
    program.Name = internalName.IsEmpty() ? title : internalName;
    program.RegistryPath = RegistryRoot + program.Name;
    Platform::FixedFileInfo fixed{};
    program.HasLogo = record.GetFixedInfo(fixed);
    if (program.HasLogo) {
        const std::uint32_t version = fixed.dwFileVersionMS;
        program.RegistryPath += CUnicodeString::Format(u"\\%d.%02d", version >> 16, version & 0xFFFF);
        program.Logo[0] = internalName;
        program.Logo[1] = record.GetString(u"FileDescription");
        program.Logo[2] = record.GetString(u"ProductVersion");
        program.Logo[3] = record.GetString(u"LegalCopyright");
    }
    return program;
}

const CProgramIdentity& GetProgramIdentity() {
    static const CProgramIdentity program = [] {
        CVersionInfo record;
        record.Load(FileSystem::GetProgramPath());
        return IdentifyProgram(record, GetProgramTitle());
    }();
    return program;
}

} // namespace Tsx
