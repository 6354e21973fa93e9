// What the runs need of the registry: the recording library as mail client, settings of the foundation. All of it is
// taken back.
#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

/// A run of the bundle: its values by their keys, some of them several times. bundle.py has the keys.
using TestCase = std::multimap<std::wstring, std::wstring>;

/// A file's content, as bytes and as UTF-16; empty if it can't be read.
inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}
inline std::wstring ReadText(const std::filesystem::path& path) {
    const std::string bytes = ReadBytes(path);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

/// The machine's registry, as it was found, is restored at the end; after a run that was killed, by the next one, which
/// finds what it left in the file `journal`. Without that file nothing starts: std::runtime_error.
class CMachineChanges {
public:
    explicit CMachineChanges(std::filesystem::path journalPath) : journal(std::move(journalPath)) {
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
    ~CMachineChanges() { Restore(); }
    CMachineChanges(const CMachineChanges&) = delete;
    CMachineChanges& operator=(const CMachineChanges&) = delete;

    /// Why nothing can be changed; empty if it can. The client belongs to the whole machine, so that an elevated
    /// process is needed; and nobody's own settings of the foundation may be lost.
    const std::wstring& WhyNot() const { return reason; }

    /// Makes that the default mail client; `extended` may be empty.
    void RegisterClient(const std::wstring& simple, const std::wstring& extended) {
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

    /// Puts those of the run ("NAME=VALUE" under `user` and `machine`) in the place of all settings.
    void SetSettings(const TestCase& row) {
        for (HKEY root : Roots) {
            RegDeleteTreeW(root, Settings);
            const auto [first, last] = row.equal_range(root == HKEY_CURRENT_USER ? L"user" : L"machine");
            for (auto at = first; at != last; ++at) {
                const std::size_t sign = at->second.find(L'=');
                SetText(root, Settings, at->second.substr(0, sign).c_str(), at->second.substr(sign + 1));
            }
        }
    }

private:
    static inline const HKEY Roots[] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER};
    static constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
    static constexpr const wchar_t* ClientKey = L"Software\\Clients\\Mail\\CorvaneTest";
    static constexpr const wchar_t* ClientName = L"CorvaneTest";
    static constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

    const std::filesystem::path journal;
    std::wstring reason;

    // Whether the system let us.
    static bool SetText(HKEY root, const wchar_t* path, const wchar_t* name, const std::wstring& text,
                        DWORD type = REG_SZ) {
        const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
        return RegSetKeyValueW(root, path, name, type, text.c_str(), size) == ERROR_SUCCESS;
    }

    // The default mail client of a root, behind the character of its type's number; empty without one.
    static std::wstring DefaultClient(HKEY root) {
        wchar_t name[256] = {};
        DWORD size = sizeof(name);
        DWORD type = 0;
        constexpr DWORD texts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
        const LSTATUS status = RegGetValueW(root, Clients, nullptr, texts, &type, name, &size);
        return status == ERROR_SUCCESS ? static_cast<wchar_t>(type) + std::wstring(name) : L"";
    }

    // What somebody else has chosen since stays.
    static void RestoreDefaultClient(HKEY root, const std::wstring& former) {
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
    static void RemoveIfEmpty(HKEY root, const wchar_t* path) {
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

    void Restore() {
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
};
