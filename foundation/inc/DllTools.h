// One loaded library and its entry points: the base of the Simple MAPI sender. The file is spelled as its assertion
// names it.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/errors.h"
#include "platform/inc/types.h"

namespace Tsx {

/// An object for one thread, on its user's stack or as a base.
class CDll {
public:
    CDll() = default;
    /// Calls Free.
    virtual ~CDll();
    CDll(const CDll&) = delete;
    CDll& operator=(const CDll&) = delete;

    /// Unloads the library if this object owns it, and forgets it in any case. Nothing when none is loaded.
    virtual void Free();

    /// Loads a library by name or path. Raises CLastErrorException, or CMemoryException for error 8; the object is
    /// loadable again then.
    void Load(const char16_t* name);
    bool IsLoaded() const { return Handle != nullptr; }
    /// The path of the loaded module.
    CUnicodeString GetPath() const;
    /// The address of an entry point; raises ERR_CANT_LOAD_DLL with the module's path and the name.
    Platform::Procedure GetProcedure(const char* name) const;

protected:
    Platform::Module Handle = nullptr;
    std::int32_t Ownership = 0; // 1: Free unloads the module; 0: it only forgets it

    /// The last check before an entry is called: a null one is an internal error, whose line is fixed so that reports
    /// stay comparable from version to version, and `message` is raised where that did not throw.
    template <class TEntry>
    static void RequireEntry(TEntry* entry, const CMessageName& message) {
        if (!entry) {
            FailAssertion(u"inc\\DllTools", 118);
            GenerateCheckException(message, u"", u"");
        }
    }
};

} // namespace Tsx
