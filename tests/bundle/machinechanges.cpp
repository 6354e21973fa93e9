#include "tests/bundle/machinechanges.h"

#include "tests/bundle/text.h"
#include <sstream>
#include <stdexcept>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
constexpr const wchar_t* ClientKey = L"Software\\Clients\\Mail\\CorvaneTest";
constexpr const wchar_t* ClientName = L"CorvaneTest";
constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

struct Key {
    HKEY root;
    const wchar_t* path;
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

bool Exists(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    return RegOpenKeyExW(root, path, 0, KEY_READ, &key) == ERROR_SUCCESS && RegCloseKey(key) == ERROR_SUCCESS;
}

// Whether the system let us.
bool SetText(HKEY root, const wchar_t* path, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(root, path, name, type, text.c_str(), size) == ERROR_SUCCESS;
}

// The default mail client of a root, behind the character of its type's number; empty without one.
std::wstring DefaultClient(HKEY root) {
    wchar_t name[256] = {};
    DWORD size = sizeof(name);
    DWORD type = 0;
    constexpr DWORD texts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    const LSTATUS status = RegGetValueW(root, Clients, nullptr, texts, &type, name, &size);
    return status == ERROR_SUCCESS ? static_cast<wchar_t>(type) + std::wstring(name) : L"";
}

// What somebody else has chosen since stays.
void RestoreDefaultClient(HKEY root, const std::wstring& former) {
    if (DefaultClient(root) != static_cast<wchar_t>(REG_SZ) + std::wstring(ClientName)) {
        return;
    }
    if (former.empty()) {
        RegDeleteKeyValueW(root, Clients, nullptr);
    } else {
        SetText(root, Clients, nullptr, former.substr(1), former[0]);
    }
}

void Remove(const Key& key) {
    DWORD keys = 0;
    DWORD values = 0;
    HKEY opened = nullptr;
    if (key.mayHoldOthers && RegOpenKeyExW(key.root, key.path, 0, KEY_READ, &opened) == ERROR_SUCCESS) {
        RegQueryInfoKeyW(opened, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                         nullptr);
        RegCloseKey(opened);
    }
    if (keys == 0 && values == 0) {
        RegDeleteTreeW(key.root, key.path);
    }
}

} // namespace

CMachineChanges::CMachineChanges(std::filesystem::path journalPath) : journal(std::move(journalPath)) {
    Restore();
    std::wstring known;
    for (const Key& key : Touched) {
        known += Exists(key.root, key.path) ? L'k' : L'n'; // kept, new
    }
    known += L'\n' + DefaultClient(HKEY_LOCAL_MACHINE) + L'\n' + DefaultClient(HKEY_CURRENT_USER) + L'\n';
    std::ofstream file(journal, std::ios::binary);
    file.write(reinterpret_cast<const char*>(known.data()),
               static_cast<std::streamsize>(known.size() * sizeof(wchar_t)));
    file.close();
    if (!file) {
        throw std::runtime_error("its folder cannot be written, and nothing is changed that could not be restored");
    }
    if (Exists(HKEY_CURRENT_USER, Settings) || Exists(HKEY_LOCAL_MACHINE, Settings)) {
        noSettings = L"this machine has settings of its own under Software\\Ostrel\\Tessarix, which would be lost";
    }
    if (!SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", L"")) {
        noClient = L"it changes the machine's registry: start this from an elevated prompt";
        noSettings = noClient;
    }
}

void CMachineChanges::RegisterClient(const std::wstring& simple, const std::wstring& extended) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClientKey);
    SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", simple);
    if (!extended.empty()) {
        SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DllPathEx", extended);
    }
    // The user's choice, if there is one, comes before the machine's.
    for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        SetText(root, Clients, nullptr, ClientName);
    }
}

void CMachineChanges::SetSettings(const TestCase& row) {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        RegDeleteTreeW(root, Settings);
        const auto [first, last] = row.equal_range(root == HKEY_CURRENT_USER ? L"user" : L"machine");
        for (auto at = first; at != last; ++at) {
            const std::size_t sign = at->second.find(L'=');
            SetText(root, Settings, at->second.substr(0, sign).c_str(), at->second.substr(sign + 1));
        }
    }
}

void CMachineChanges::Restore() {
    std::wistringstream file(ReadText(journal));
    std::wstring known;
    std::wstring client[2];
    if (!std::getline(file, known) || !std::getline(file, client[0]) || !std::getline(file, client[1])) {
        return; // nothing has been changed
    }
    RestoreDefaultClient(HKEY_LOCAL_MACHINE, client[0]);
    RestoreDefaultClient(HKEY_CURRENT_USER, client[1]);
    for (std::size_t i = 0; i < std::min(known.size(), std::size(Touched)); ++i) {
        if (known[i] == L'n') {
            Remove(Touched[i]);
        }
    }
    DeleteFileW(journal.c_str());
}
