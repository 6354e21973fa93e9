// Which classes archives can create: their names, factories and modules. Archives ask it. Any thread; under the
// foundation's lock.
#pragma once

#include "foundation/inc/object.h"
#include "foundation/inc/unicodestring.h"
#include <typeinfo>

namespace Tsx {

/// Creates an object with a reference count of 1, which the caller takes over.
using CObjectFactory = IObject* (*)();

/// A class under a name in archives, as long as this record lives: a static one in the module that defines the class.
class CClassRegistration {
public:
    CClassRegistration(const char16_t* name, const std::type_info& type, CObjectFactory factory);
    ~CClassRegistration();
    CClassRegistration(const CClassRegistration&) = delete;
    CClassRegistration& operator=(const CClassRegistration&) = delete;

private:
    CUnicodeString className;
    const std::type_info& classType;
};

/// Says which module registers a class when it is loaded.
void RegisterClassModule(const CUnicodeString& name, const CUnicodeString& module);

/// Whether the name has a factory, or a module that promises one.
bool IsClassKnown(const CUnicodeString& name);

/// The name of an object's class; an internal error, and empty, if its type has none.
CUnicodeString GetNameOfClass(const IObject& object);

/// A new object of the class, whose module is loaded at need and stays loaded. Raises ERR_NO_MODULE_LOADED_FOR_CLASS
/// for an unknown name and ERR_CANT_LOAD_DLL; a loaded module without the class and a factory that gives nothing are
/// internal errors. No lock is held while a module is loaded or the factory runs.
CHolder<IObject> CreateObject(const CUnicodeString& name);

} // namespace Tsx
