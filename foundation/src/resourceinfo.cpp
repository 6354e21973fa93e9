// The static modules of the resource base, and the look-up, which asks the modules of the language first.
#include "foundation/inc/resourceinfo.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/stringsort.h"
#include "foundation/src/resourcemodules.h"
#include "foundation/src/statics.h"
#include "platform/inc/resources.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\resourceinfo";

// The last module that a condition holds for, since a later one overrides those before it; null if there is none.
template <class TPredicate>
Platform::Module FindLast(const CResourceModules& modules, TPredicate isWanted) {
    for (std::int32_t i = modules.Size() - 1; i >= 0; --i) {
        if (isWanted(*modules[i])) {
            return modules[i]->handle;
        }
    }
    return nullptr;
}

} // namespace

CResourceBase& GetResourceBase() {
    return ResourceBase;
}

const CResourceModules* CResourceBase::ModulesOfThread() const {
    const CThreadLanguage* own = ThreadLanguage.Find();
    const std::uint32_t language = own && own->inverted != 0 ? ~own->inverted : currentLanguage;
    CLanguageModules* const* list = languageModules.Find(language);
    return list ? &(*list)->modules : nullptr;
}

template <class TPredicate>
Platform::Module CResourceBase::FindModule(TPredicate isWanted) {
    {
        const CCriticalSectionLock guard(mainLock);
        const CResourceModules* modules = ModulesOfThread();
        if (Platform::Module found = modules ? FindLast(*modules, isWanted) : nullptr) {
            return found;
        }
    }
    const CCriticalSectionLock guard(staticLock);
    return FindLast(staticModules, isWanted);
}

void CResourceBase::RegisterStaticModule(Platform::Module handle) {
    CRecordHolder<CResourceModule> module = MakeRecord<CResourceModule>();
    FillModule(*module, handle, RM_Static);
    CRecordHolder<CResourceModule> former;
    const CCriticalSectionLock guard(staticLock);
    const std::int32_t known = FindHandle(staticModules, handle);
    AppendRecord(staticModules, module);
    if (known >= 0) {
        former.reset(TakeAt(staticModules, known));
    }
}

void CResourceBase::UnregisterStaticModule(Platform::Module handle) {
    CRecordHolder<CResourceModule> module;
    {
        const CCriticalSectionLock guard(staticLock);
        const std::int32_t known = FindHandle(staticModules, handle);
        if (known >= 0) {
            module.reset(TakeAt(staticModules, known));
        }
    }
    TSX_ASSERT(module, ModuleName);
}

void CResourceBase::RemoveModulesWithoutKind() {
    const CCriticalSectionLock guard(staticLock);
    for (std::int32_t i = staticModules.Size() - 1; i >= 0; --i) {
        if (staticModules[i]->kind == 0) {
            staticModules.DeleteAt(i);
        }
    }
}

bool CResourceBase::LookupMessage(const char16_t* name, CUnicodeString& text) {
    return FindModule([name, &text](const CResourceModule& module) { return module.FindText(name, text); }) != nullptr;
}

void CResourceBase::GetAllMessageNames(CArray<CUnicodeString>& names) {
    names.RemoveAll();
    {
        const CCriticalSectionLock guard(mainLock);
        const CResourceModules* modules = ModulesOfThread();
        for (std::int32_t i = modules ? modules->Size() - 1 : -1; i >= 0; --i) {
            (*modules)[i]->AppendNames(names);
        }
    }
    {
        const CCriticalSectionLock guard(staticLock);
        for (const CResourceModule* module : staticModules) {
            module->AppendNames(names);
        }
    }
    SortUniqueStrings(names);
}

Platform::Module CResourceBase::FindModuleWithIcon(const char16_t* name) {
    return FindModule([name](const CResourceModule& module) {
        return Platform::FindResource(module.handle, name, Platform::RtGroupIcon);
    });
}

} // namespace Tsx
