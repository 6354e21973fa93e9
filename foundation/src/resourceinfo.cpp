#include "foundation/inc/resourceinfo.h"

#include "foundation/inc/assertion.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"
#include "platform/inc/resources.h"

namespace Tsx {

CResourceBase& GetResourceBase() {
    return ResourceBase;
}

bool CResourceBase::LookupMessage(const char16_t* name, CUnicodeString& text) {
    using GetResourceIDFunction = std::uint32_t(const char16_t*);
    const Platform::Module module = Platform::GetProgramModule();
    auto* getResourceId = reinterpret_cast<GetResourceIDFunction*>(Platform::GetProcAddress(module, "GetResourceID"));
    const std::uint32_t id = getResourceId ? getResourceId(name) : 0;
    return id != 0 && text.LoadString(module, id);
}

void CResourceBase::GetAllMessageNames(CArray<CUnicodeString>& names) {
    using NumberOfMessagesFunction = std::int32_t();
    using GetMessageNameFunction = const char16_t*(std::int32_t);
    const Platform::Module module = Platform::GetProgramModule();
    auto* count = reinterpret_cast<NumberOfMessagesFunction*>(Platform::GetProcAddress(module, "NumberOfMessages"));
    auto* name = reinterpret_cast<GetMessageNameFunction*>(Platform::GetProcAddress(module, "GetMessageName"));
    for (std::int32_t i = 0; count && name && i < count(); ++i) {
        names.Append(name(i)); // sorted and without duplicates already
    }
}

Platform::Module CResourceBase::FindModuleWithIcon(const char16_t* name) {
    const Platform::Module module = Platform::GetProgramModule();
    return Platform::FindResource(module, name, Platform::RtGroupIcon) ? module : nullptr;
}

std::uint32_t CResourceBase::FindLanguage(std::uint32_t language) {
    static_cast<void>(language);
    return NoLanguage;
}

void CResourceBase::SetCurrentLanguage(std::uint32_t language) {
    TSX_ASSERT(FindLanguage(language) != NoLanguage, u"src\\resourceinfo");
}

} // namespace Tsx
