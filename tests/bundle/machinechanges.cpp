#include "tests/bundle/machinechanges.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

const HKEY Roots[] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER};
constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
constexpr const wchar_t* ClientKey = L"Software\\Clients\\Mail\\CorvaneTest";
constexpr const wchar_t* ClientName = L"CorvaneTest";
constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

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

// Of a key that is not there the numbers stay, and nothing is removed.
void RemoveIfEmpty(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    DWORD keys = 1;
    DWORD values = 1;
    RegOpenKeyExW(root, path, 0, KEY_READ, &key);
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(key);
    if (keys == 0 && values == 0) {
        RegDeleteKeyW(root, path);
    }
}

} // namespace

std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::wstring ReadText(const std::filesystem::path& path) {
    const std::string bytes = ReadBytes(path);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

CMachineChanges::CMachineChanges(std::filesystem::path journalPath) : journal(std::move(journalPath)) {
    Restore();
    for (HKEY root : Roots) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, Settings, 0, KEY_READ, &key) == ERROR_SUCCESS) {
            RegCloseKey(key);
            reason = L"this machine has settings of its own under Software\\Ostrel\\Tessarix, which would be lost";
            return;
        }
    }
    const std::wstring known = DefaultClient(Roots[0]) + L'\n' + DefaultClient(Roots[1]) + L'\n';
    std::ofstream file(journal, std::ios::binary);
    file.write(reinterpret_cast<const char*>(known.data()),
               static_cast<std::streamsize>(known.size() * sizeof(wchar_t)));
    file.close();
    if (!file) {
        throw std::runtime_error("its folder cannot be written, and nothing is changed that could not be restored");
    }
    if (!SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", L"")) { // only the system knows whom it lets
        reason = L"it changes the machine's registry: start this from an elevated prompt";
    }
}

void CMachineChanges::RegisterClient(const std::wstring& simple, const std::wstring& extended) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClientKey);
    SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", simple);
    if (!extended.empty()) {
        SetText(HKEY_LOCAL_MACHINE, ClientKey, L"DllPathEx", extended);
    }
    // The user's choice, if there is one, comes before the machine's.
    for (HKEY root : Roots) {
        SetText(root, Clients, nullptr, ClientName);
    }
}

void CMachineChanges::SetSettings(const TestCase& row) {
    for (HKEY root : Roots) {
        RegDeleteTreeW(root, Settings);
        const auto [first, last] = row.equal_range(root == HKEY_CURRENT_USER ? L"user" : L"machine");
        for (auto at = first; at != last; ++at) {
            const std::size_t sign = at->second.find(L'=');
            SetText(root, Settings, at->second.substr(0, sign).c_str(), at->second.substr(sign + 1));
        }
    }
}

void CMachineChanges::Restore() {
    // What the test programs make.
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\CorvaneTest");
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\TessarixTest");
    std::wistringstream file(ReadText(journal));
    std::wstring clients[2];
    if (!std::getline(file, clients[0]) || !std::getline(file, clients[1])) {
        return; // nothing else has been changed
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClientKey);
    for (std::size_t i = 0; i < std::size(Roots); ++i) {
        RestoreDefaultClient(Roots[i], clients[i]);
        RegDeleteTreeW(Roots[i], Settings);
        for (const wchar_t* path : {Clients, L"Software\\Clients", L"Software\\Ostrel"}) {
            RemoveIfEmpty(Roots[i], path);
        }
    }
    DeleteFileW(journal.c_str());
}
