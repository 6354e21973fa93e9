// What the runs need of the registry: the recording library as mail client, settings of the foundation. All of it is
// taken back.
#pragma once

#include <map>
#include <string>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

/// A run of the bundle: its values by their keys, some of them several times. bundle.py has the keys.
using TestCase = std::multimap<std::wstring, std::wstring>;

/// The machine's registry, as it was found, is restored at the end; after a run that was killed, by the next one, for
/// what was there before lies in the client's own key meanwhile.
class CMachineChanges {
public:
    CMachineChanges() {
        Restore();
        for (HKEY root : Roots) {
            HKEY key = nullptr;
            if (RegOpenKeyExW(root, Settings, 0, KEY_READ, &key) == ERROR_SUCCESS) {
                RegCloseKey(key);
                reason = L"this machine has settings of its own under Software\\Ostrel\\Tessarix, which would be lost";
                return;
            }
        }
        for (std::size_t i = 0; i < std::size(Roots); ++i) {
            Set(HKEY_LOCAL_MACHINE, ClientKey, Former[i], Get(Roots[i], Clients, nullptr));
        }
        if (!Set(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", {})) { // only the system knows whom it lets
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
        Set(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath", {simple});
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, ClientKey, L"DllPathEx");
        if (!extended.empty()) {
            Set(HKEY_LOCAL_MACHINE, ClientKey, L"DllPathEx", {extended});
        }
        // The user's choice, if there is one, comes before the machine's.
        for (HKEY root : Roots) {
            Set(root, Clients, nullptr, {ClientName});
        }
    }

    /// Puts those of the run ("NAME=VALUE" under `user` and `machine`) in the place of all settings.
    void SetSettings(const TestCase& row) {
        for (HKEY root : Roots) {
            RegDeleteTreeW(root, Settings);
            const auto [first, last] = row.equal_range(root == HKEY_CURRENT_USER ? L"user" : L"machine");
            for (auto at = first; at != last; ++at) {
                const std::size_t sign = at->second.find(L'=');
                Set(root, Settings, at->second.substr(0, sign).c_str(), {at->second.substr(sign + 1)});
            }
        }
    }

private:
    static inline const HKEY Roots[] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER};
    static constexpr const wchar_t* Former[] = {L"MachineDefault", L"UserDefault"}; // the default clients before
    static constexpr const wchar_t* Clients = L"Software\\Clients\\Mail";
    static constexpr const wchar_t* ClientKey = L"Software\\Clients\\Mail\\CorvaneTest";
    static constexpr const wchar_t* ClientName = L"CorvaneTest";
    static constexpr const wchar_t* Settings = L"Software\\Ostrel\\Tessarix";

    std::wstring reason;

    struct Text {
        std::wstring text;
        DWORD type = REG_SZ; // or REG_EXPAND_SZ; REG_NONE for no value
    };
    static Text Get(HKEY root, const wchar_t* path, const wchar_t* name) {
        wchar_t text[1000] = {};
        DWORD size = sizeof(text);
        DWORD type = REG_NONE;
        constexpr DWORD texts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
        const bool found = RegGetValueW(root, path, name, texts, &type, text, &size) == ERROR_SUCCESS;
        return {text, found ? type : REG_NONE};
    }
    /// Whether the system let us.
    static bool Set(HKEY root, const wchar_t* path, const wchar_t* name, const Text& value) {
        const auto size = static_cast<DWORD>((value.text.size() + 1) * sizeof(wchar_t));
        return (value.type == REG_NONE ? RegDeleteKeyValueW(root, path, name)
                                       : RegSetKeyValueW(root, path, name, value.type, value.text.c_str(), size)) == 0;
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
        if (Get(HKEY_LOCAL_MACHINE, ClientKey, L"DLLPath").type == REG_NONE) {
            return; // nothing else has been changed
        }
        for (std::size_t i = 0; i < std::size(Roots); ++i) {
            RegDeleteTreeW(Roots[i], Settings);
            RemoveIfEmpty(Roots[i], L"Software\\Ostrel");
            if (Get(Roots[i], Clients, nullptr).text == ClientName) { // what somebody else has chosen since stays
                Set(Roots[i], Clients, nullptr, Get(HKEY_LOCAL_MACHINE, ClientKey, Former[i]));
            }
        }
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClientKey);
        for (HKEY root : Roots) {
            RemoveIfEmpty(root, Clients);
            RemoveIfEmpty(root, L"Software\\Clients");
        }
    }
};
