#include "tests/bundle/machinechanges.h"

#include "tests/bundle/text.h"
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
constexpr const wchar_t* ClientName = L"CorvaneTest";
constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

const std::wstring ClientKey = std::wstring(Clients) + L"\\" + ClientName;

struct Key {
    HKEY root;
    std::wstring path;
    bool mayHoldOthers = false; // it is removed only if nothing is in it
};

// Keys that a run makes, or the test programs in it: removed at the end, unless they were there before.
const Key Touched[] = {
    {HKEY_LOCAL_MACHINE, ClientKey},
    {HKEY_LOCAL_MACHINE, Clients, true},
    {HKEY_CURRENT_USER, Clients, true},
    {HKEY_CURRENT_USER, L"Software\\Clients", true},
    {HKEY_LOCAL_MACHINE, Settings},
    {HKEY_CURRENT_USER, Settings},
    {HKEY_LOCAL_MACHINE, L"Software\\Ostrel", true},
    {HKEY_CURRENT_USER, L"Software\\Ostrel", true},
    {HKEY_CURRENT_USER, L"Software\\TessarixTest"},
    {HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\CorvaneTest"},
};

bool Exists(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    return RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS && RegCloseKey(key) == ERROR_SUCCESS;
}

void Remove(const Key& key) {
    DWORD keys = 0;
    DWORD values = 0;
    HKEY opened = nullptr;
    if (key.mayHoldOthers && RegOpenKeyExW(key.root, key.path.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS) {
        RegQueryInfoKeyW(opened, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                         nullptr);
        RegCloseKey(opened);
    }
    if (keys == 0 && values == 0) {
        RegDeleteTreeW(key.root, key.path.c_str());
    }
}

// Tries it: only the system knows whom it lets.
bool CanChange(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    return RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) ==
               ERROR_SUCCESS &&
           RegCloseKey(key) == ERROR_SUCCESS;
}

void SetText(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
    RegSetKeyValueW(root, path.c_str(), name, type, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

// The default mail client of a root, as type and text; empty without one.
std::wstring DefaultClient(HKEY root) {
    wchar_t name[256] = {};
    DWORD size = sizeof(name);
    DWORD type = 0;
    constexpr DWORD texts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    const LSTATUS status = RegGetValueW(root, Clients, nullptr, texts, &type, name, &size);
    return status == ERROR_SUCCESS ? std::to_wstring(type) + L' ' + name : L"";
}

// What somebody else has chosen since stays.
void RestoreDefaultClient(HKEY root, const std::wstring& former) {
    if (DefaultClient(root) != std::to_wstring(REG_SZ) + L' ' + ClientName) {
        return;
    }
    if (former.empty()) {
        RegDeleteKeyValueW(root, Clients, nullptr);
    } else {
        const std::size_t blank = former.find(L' ');
        SetText(root, Clients, nullptr, former.substr(blank + 1), std::stoul(former.substr(0, blank)));
    }
}

} // namespace

CMachineChanges::CMachineChanges(std::wstring journalPath) : journal(std::move(journalPath)) {
    Restore();
    std::string known;
    for (const Key& key : Touched) {
        known += Exists(key.root, key.path) ? 'k' : 'n'; // kept, new
    }
    std::ofstream file(std::filesystem::path(journal), std::ios::binary);
    file << known << '\n'
         << Narrow(DefaultClient(HKEY_LOCAL_MACHINE)) << '\n'
         << Narrow(DefaultClient(HKEY_CURRENT_USER)) << '\n';
    file.close();
    if (!file) {
        throw std::runtime_error("its folder cannot be written, and nothing is changed that could not be restored");
    }
    if (Exists(HKEY_CURRENT_USER, Settings) || Exists(HKEY_LOCAL_MACHINE, Settings)) {
        noSettings = "this machine has settings of its own under Software\\Ostrel\\Tessarix, which would be lost";
    }
    if (!CanChange(HKEY_LOCAL_MACHINE, ClientKey)) {
        noClient = "it changes the machine's registry: start this from an elevated prompt";
        noSettings = noClient;
    }
}

CMachineChanges::~CMachineChanges() {
    Restore();
}

void CMachineChanges::RegisterClient(const std::wstring& simple, const std::wstring& extended) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClientKey.c_str());
    SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", simple);
    if (!extended.empty()) {
        SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DllPathEx", extended);
    }
    // The user's choice, if there is one, comes before the machine's.
    for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        SetText(root, Clients, nullptr, ClientName);
    }
}

void CMachineChanges::SetSettings(const Values& user, const Values& machine) {
    for (const auto& [root, values] : {std::pair(HKEY_CURRENT_USER, &user), std::pair(HKEY_LOCAL_MACHINE, &machine)}) {
        RegDeleteTreeW(root, Settings);
        for (const auto& [name, value] : *values) {
            SetText(root, Settings, name.c_str(), value);
        }
    }
}

void CMachineChanges::Restore() {
    std::ifstream file{std::filesystem::path(journal), std::ios::binary};
    std::string known;
    std::string machineClient;
    std::string userClient;
    if (!std::getline(file, known) || !std::getline(file, machineClient) || !std::getline(file, userClient)) {
        return; // nothing has been changed
    }
    file.close();
    RestoreDefaultClient(HKEY_LOCAL_MACHINE, Wide(machineClient));
    RestoreDefaultClient(HKEY_CURRENT_USER, Wide(userClient));
    for (std::size_t i = 0; i < std::min(known.size(), std::size(Touched)); ++i) {
        if (known[i] == 'n') {
            Remove(Touched[i]);
        }
    }
    DeleteFileW(journal.c_str());
}
