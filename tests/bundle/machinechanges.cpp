#include "tests/bundle/machinechanges.h"

#include "tests/bundle/text.h"
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
constexpr const wchar_t* ClientName = L"CorvaneTest";
constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

// Keys that a run makes, or the test programs in it; those that are not there before are removed with all that they
// hold.
const std::pair<HKEY, const wchar_t*> Touched[] = {
    {HKEY_LOCAL_MACHINE, L"Software\\Clients\\Mail\\CorvaneTest"},
    {HKEY_LOCAL_MACHINE, L"Software\\Clients\\Mail"},
    {HKEY_CURRENT_USER, L"Software\\Clients\\Mail"},
    {HKEY_CURRENT_USER, L"Software\\Clients"},
    {HKEY_LOCAL_MACHINE, L"Software\\Ostrel"},
    {HKEY_CURRENT_USER, L"Software\\Ostrel"},
    {HKEY_LOCAL_MACHINE, Settings},
    {HKEY_CURRENT_USER, Settings},
    {HKEY_CURRENT_USER, L"Software\\TessarixTest"},
    {HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\CorvaneTest"},
};

const std::wstring ClientKey = std::wstring(Clients) + L"\\" + ClientName;

bool Exists(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    return RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS && RegCloseKey(key) == ERROR_SUCCESS;
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

void RestoreDefaultClient(HKEY root, const std::wstring& former) {
    if (former.empty()) {
        RegDeleteKeyValueW(root, Clients, nullptr);
    } else if (former != DefaultClient(root)) {
        const std::size_t blank = former.find(L' ');
        SetText(root, Clients, nullptr, former.substr(blank + 1), std::stoul(former.substr(0, blank)));
    }
}

} // namespace

CMachineChanges::CMachineChanges(std::wstring journalPath) : journal(std::move(journalPath)) {
    Restore();
    std::string missing;
    for (const auto& [root, path] : Touched) {
        missing += Exists(root, path) ? 'k' : 'n'; // kept, new
    }
    std::ofstream(std::filesystem::path(journal), std::ios::binary) << missing << '\n'
                                                                    << Narrow(DefaultClient(HKEY_LOCAL_MACHINE)) << '\n'
                                                                    << Narrow(DefaultClient(HKEY_CURRENT_USER)) << '\n';
    if (Exists(HKEY_CURRENT_USER, Settings) || Exists(HKEY_LOCAL_MACHINE, Settings)) {
        noSettings = "this machine has settings of its own under Software\\Ostrel\\Tessarix, which would be lost";
    }
    if (!std::filesystem::exists(journal) || !CanChange(HKEY_LOCAL_MACHINE, ClientKey)) {
        noClient =
            "it changes the machine's registry: start this from an elevated prompt, in a folder that can be written";
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
    std::string missing, machineClient, userClient;
    if (!std::getline(file, missing) || !std::getline(file, machineClient) || !std::getline(file, userClient)) {
        return; // nothing has been changed
    }
    file.close();
    RestoreDefaultClient(HKEY_LOCAL_MACHINE, Wide(machineClient));
    RestoreDefaultClient(HKEY_CURRENT_USER, Wide(userClient));
    for (std::size_t i = 0; i < std::min(missing.size(), std::size(Touched)); ++i) {
        if (missing[i] == 'n') {
            RegDeleteTreeW(Touched[i].first, Touched[i].second);
        }
    }
    DeleteFileW(journal.c_str());
}
