#include "foundation/src/classregistry.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/modulelist.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\classregistry";

/// The factory of a class, or for a class without one the module to load.
struct CClassSource {
    CObjectFactory factory = nullptr;
    CUnicodeString module;
};

CClassSource FindSource(const CUnicodeString& name) {
    const CCriticalSectionLock guard(FoundationLock);
    CClassSource source;
    if (const CObjectFactory* factory = ClassRegistry.Factories.Find(name)) {
        source.factory = *factory;
    } else if (const CUnicodeString* module = ClassRegistry.Modules.Find(name)) {
        TSX_REQUIRE(!Platform::GetModuleHandle(module->Text()), ModuleName, {});
        source.module = *module;
    } else {
        GenerateCheckException(ERR_NO_MODULE_LOADED_FOR_CLASS, name.Text(), u"");
    }
    return source;
}

CObjectFactory FindFactory(const CUnicodeString& name) {
    const CCriticalSectionLock guard(FoundationLock);
    const CObjectFactory* factory = ClassRegistry.Factories.Find(name);
    TSX_REQUIRE(factory, ModuleName, nullptr);
    return *factory;
}

// Another record of the same class or name may have gone before.
template <class TTable, class TKey>
void DeleteIfPresent(TTable& table, const TKey& key) {
    if (table.Has(key)) {
        table.Delete(key);
    }
}

} // namespace

CClassRegistration::CClassRegistration(const char16_t* name, const std::type_info& type, CObjectFactory factory)
    : className(name), classType(type) {
    const CCriticalSectionLock guard(FoundationLock);
    ClassRegistry.Factories.Set(className, factory);
    ClassRegistry.Names.Set(type, className);
}

CClassRegistration::~CClassRegistration() {
    const CCriticalSectionLock guard(FoundationLock);
    DeleteIfPresent(ClassRegistry.Factories, className);
    DeleteIfPresent(ClassRegistry.Names, std::type_index(classType));
}

void RegisterClassModule(const CUnicodeString& name, const CUnicodeString& module) {
    const CCriticalSectionLock guard(FoundationLock);
    ClassRegistry.Modules.Set(name, module);
}

bool IsClassKnown(const CUnicodeString& name) {
    const CCriticalSectionLock guard(FoundationLock);
    return ClassRegistry.Factories.Has(name) || ClassRegistry.Modules.Has(name);
}

CUnicodeString GetNameOfClass(const IObject& object) {
    const CCriticalSectionLock guard(FoundationLock);
    const CUnicodeString* name = ClassRegistry.Names.Find(typeid(object));
    TSX_REQUIRE(name, ModuleName, {});
    return *name;
}

CHolder<IObject> CreateObject(const CUnicodeString& name) {
    CClassSource source = FindSource(name);
    if (!source.module.IsEmpty()) {
        LoadModule(source.module.Text()); // for as long as the foundation stands
        source.factory = FindFactory(name);
    }
    auto object = CHolder<IObject>::Adopt(source.factory ? source.factory() : nullptr);
    TSX_ASSERT(!object.IsEmpty(), ModuleName);
    return object;
}

} // namespace Tsx
