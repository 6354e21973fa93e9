// Open keys are names: a call looks up what they stand for in the file as it is then.
#include "platform/inc/registry.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/registry/regfile.h"
#include "platform/linux/registry/regstore.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <map>
#include <mutex>
#include <new>

namespace Platform {

namespace {

struct OpenKey {
    RegistryRoot root = RegistryRoot::CurrentUser;
    std::vector<std::u16string> names; // the root's first
    std::uint32_t access = 0;
};

using KeyReference = std::shared_ptr<const OpenKey>;

struct OpenKeys {
    std::mutex lock;
    std::map<RegistryKey, KeyReference> keys; // by the handle, which is the object's address
};

// Never destroyed: a key may be closed by a static object's end.
OpenKeys& AllOpenKeys() {
    static OpenKeys& keys = *new OpenKeys;
    return keys;
}

// Runs the body of a call, in which strings and trees may find no memory.
template <class TAction>
std::uint32_t Guarded(TAction action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return ErrorNotEnoughMemory;
    }
}

std::uint32_t FindRoot(std::uint32_t number, KeyReference& found) {
    if (number != HkeyCurrentUser && number != HkeyLocalMachine) {
        return ErrorFileNotFound;
    }
    const auto root = number == HkeyCurrentUser ? RegistryRoot::CurrentUser : RegistryRoot::LocalMachine;
    found = std::make_shared<const OpenKey>(OpenKey{root, {NameOf(root)}, KeyReadWrite});
    return ErrorSuccess;
}

// What a handle stands for.
std::uint32_t FindKey(RegistryKey key, KeyReference& found) {
    if (const std::uint32_t number = RootNumber(key)) {
        return FindRoot(number, found);
    }
    OpenKeys& open = AllOpenKeys();
    const std::lock_guard guard(open.lock);
    const auto place = open.keys.find(key);
    if (place == open.keys.end()) {
        return ErrorInvalidHandle;
    }
    found = place->second;
    return ErrorSuccess;
}

RegistryKey Register(KeyReference key) {
    RegistryKey handle = const_cast<OpenKey*>(key.get());
    OpenKeys& open = AllOpenKeys();
    const std::lock_guard guard(open.lock);
    open.keys.emplace(handle, std::move(key));
    return handle;
}

// A root is there without a file.
bool Exists(const RegistryNode& top, const OpenKey& key) {
    return key.names.size() == 1 || FindNode(top, key.names);
}

// The key at `path` below another, whether it is there or not.
std::uint32_t FindBelow(RegistryKey key, const char16_t* path, std::uint32_t access, KeyReference& parent,
                        std::shared_ptr<OpenKey>& below) {
    std::uint32_t result = FindKey(key, parent);
    if (result == ErrorSuccess) {
        below = std::make_shared<OpenKey>(OpenKey{parent->root, parent->names, access});
        result = SplitKeyPath(path ? path : u"", below->names);
    }
    return result;
}

std::uint32_t CheckExists(const OpenKey& parent, const OpenKey& key) {
    std::shared_ptr<const RegistryNode> top;
    const std::uint32_t result = LoadRegistry(key.root, top);
    if (result != ErrorSuccess || Exists(*top, key)) {
        return result;
    }
    return Exists(*top, parent) ? ErrorFileNotFound : ErrorKeyDeleted;
}

// Opens the key at `path` below another; `onMissing` decides what a key that isn't there comes to.
template <class TMissing>
std::uint32_t OpenBelow(RegistryKey key, const char16_t* path, std::uint32_t access, RegistryKey& opened,
                        TMissing onMissing) {
    return Guarded([&] {
        KeyReference parent;
        std::shared_ptr<OpenKey> wanted;
        std::uint32_t result = FindBelow(key, path, access, parent, wanted);
        if (result == ErrorSuccess) {
            result = CheckExists(*parent, *wanted);
            if (result == ErrorFileNotFound) {
                result = onMissing(*wanted);
            }
        }
        if (result == ErrorSuccess) {
            opened = Register(std::move(wanted));
        }
        return result;
    });
}

std::uint32_t CopyValue(const RegistryValue& value, std::uint32_t* type, void* data, std::uint32_t* size) {
    const auto needed = static_cast<std::uint32_t>(value.bytes.size());
    const std::uint32_t room = data ? *size : 0;
    if (type) {
        *type = value.type;
    }
    if (size) {
        *size = needed;
    }
    if (!data) {
        return ErrorSuccess;
    }
    if (room < needed) {
        return ErrorMoreData;
    }
    std::copy(value.bytes.begin(), value.bytes.end(), static_cast<char*>(data));
    return ErrorSuccess;
}

// Runs an action on the value of an open key.
template <class TAction>
std::uint32_t WithValue(RegistryKey key, std::u16string_view name, TAction action) {
    return Guarded([&] {
        KeyReference open;
        std::uint32_t result = FindKey(key, open);
        if (result != ErrorSuccess) {
            return result;
        }
        if (!(open->access & KeyQueryValue)) {
            return ErrorAccessDenied;
        }
        std::shared_ptr<const RegistryNode> top;
        result = LoadRegistry(open->root, top);
        if (result != ErrorSuccess) {
            return result;
        }
        if (!Exists(*top, *open)) {
            return ErrorKeyDeleted;
        }
        if (const RegistryNode* node = FindNode(*top, open->names)) {
            if (const auto value = node->values.find(name); value != node->values.end()) {
                return action(value->second);
            }
        }
        return ErrorFileNotFound;
    });
}

// The value with its characters narrow, if it is a text.
RegistryValue Narrow(const RegistryValue& value) {
    return IsText(value.type) ? RegistryValue{value.type, Utf8Text(TextOf(value.bytes))} : value;
}

} // namespace

std::uint32_t RegOpenKeyEx(RegistryKey key, const char16_t* path, std::uint32_t, std::uint32_t access,
                           RegistryKey& opened) {
    opened = nullptr;
    PLATFORM_FAULT(RegOpenKeyEx, GetLastError());
    return OpenBelow(key, path, access, opened, [](const OpenKey&) { return ErrorFileNotFound; });
}

std::uint32_t RegCreateKeyEx(RegistryKey key, const char16_t* path, std::uint32_t, std::uint32_t access,
                             RegistryKey& opened) {
    opened = nullptr;
    PLATFORM_FAULT(RegCreateKeyEx, GetLastError());
    return OpenBelow(key, path, access, opened, [](const OpenKey& missing) {
        return ChangeRegistry(missing.root, [&missing](const RegistryNode& top, std::string& bytes) {
            if (!Exists(top, missing)) { // made by someone else meanwhile
                bytes = AddRegistryKey(bytes, missing.names);
            }
            return ErrorSuccess;
        });
    });
}

std::uint32_t RegCloseKey(RegistryKey key) {
    bool isClosed = RootNumber(key) != 0;
    {
        OpenKeys& open = AllOpenKeys();
        const std::lock_guard guard(open.lock);
        isClosed = open.keys.erase(key) != 0 || isClosed;
    }
    PLATFORM_FAULT(RegCloseKey, GetLastError());
    return isClosed ? ErrorSuccess : ErrorInvalidHandle;
}

std::uint32_t RegQueryValueEx(RegistryKey key, const char16_t* name, std::uint32_t* type, void* data,
                              std::uint32_t* size) {
    PLATFORM_FAULT(RegQueryValueEx, GetLastError());
    if (data && !size) {
        return ErrorInvalidParameter;
    }
    return WithValue(key, name ? name : u"",
                     [&](const RegistryValue& value) { return CopyValue(value, type, data, size); });
}

std::uint32_t RegQueryValueExA(RegistryKey key, const char* name, std::uint32_t* type, void* data,
                               std::uint32_t* size) {
    PLATFORM_FAULT(RegQueryValueExA, GetLastError());
    if (data && !size) {
        return ErrorInvalidParameter;
    }
    return WithValue(key, Utf16Text(name ? name : ""),
                     [&](const RegistryValue& value) { return CopyValue(Narrow(value), type, data, size); });
}

std::uint32_t RegSetValueEx(RegistryKey key, const char16_t* name, std::uint32_t type, const void* data,
                            std::uint32_t size) {
    PLATFORM_FAULT(RegSetValueEx, GetLastError());
    if (!data && size > 0) {
        return ErrorNoAccess;
    }
    return Guarded([&] {
        KeyReference open;
        const std::uint32_t result = FindKey(key, open);
        if (result != ErrorSuccess) {
            return result;
        }
        if (!(open->access & KeySetValue)) {
            return ErrorAccessDenied;
        }
        return ChangeRegistry(open->root, [&](const RegistryNode& top, std::string& bytes) {
            if (!Exists(top, *open)) {
                return ErrorKeyDeleted;
            }
            const RegistryValue value{type, {static_cast<const char*>(data), size}};
            bytes = SetRegistryValue(bytes, open->names, name ? name : u"", value);
            return ErrorSuccess;
        });
    });
}

} // namespace Platform
