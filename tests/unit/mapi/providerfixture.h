// A folder with copies of the noting library, a registry of its own, and what was noted: the search for a MAPI library
// as it is seen from outside.
#pragma once

#include "mapi/MapiProvider.h"
#include "platform/inc/modules.h"
#include "platform/inc/registry.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>
#ifdef _WIN32
#include "platform/win32/windowsapi.h"
#endif

constexpr std::uint32_t User = Platform::HkeyCurrentUser;
constexpr std::uint32_t Machine = Platform::HkeyLocalMachine;

#ifdef _WIN32
inline void SetVariable(const char* name, const std::string& value) {
    _putenv_s(name, value.c_str());
    ::SetEnvironmentVariableA(name, value.c_str());
}

/// A registry of the test's own in the place of both roots.
class CScratchRegistry {
public:
    explicit CScratchRegistry(const std::filesystem::path&) {
        for (const std::uint32_t root : {User, Machine}) {
            const char16_t* path = root == User ? u"Software\\TessarixTest\\User" : u"Software\\TessarixTest\\Machine";
            Platform::RegistryKey key = nullptr;
            Platform::RegCreateKeyEx(realUser, path, 0, Platform::KeyReadWrite, key);
            ::RegOverridePredefKey(static_cast<HKEY>(Platform::RootKey(root)), static_cast<HKEY>(key));
            Platform::RegCloseKey(key);
        }
    }
    ~CScratchRegistry() {
        for (const std::uint32_t root : {User, Machine}) {
            ::RegOverridePredefKey(static_cast<HKEY>(Platform::RootKey(root)), nullptr);
        }
        ::RegDeleteTreeW(static_cast<HKEY>(realUser), L"Software\\TessarixTest");
        Platform::RegCloseKey(realUser);
    }
    CScratchRegistry(const CScratchRegistry&) = delete;
    CScratchRegistry& operator=(const CScratchRegistry&) = delete;

private:
    Platform::RegistryKey realUser = [] {
        HKEY key = nullptr;
        ::RegOpenCurrentUser(KEY_ALL_ACCESS, &key);
        return key;
    }();
};
#else
inline void SetVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

class CScratchRegistry {
public:
    explicit CScratchRegistry(const std::filesystem::path& folder) {
        std::filesystem::create_directory(folder / "registry");
        SetVariable("TESSARIX_REGISTRY", folder / "registry");
    }
};
#endif

inline std::string Lower(std::u16string_view text) {
    std::string narrow;
    for (const char16_t c : text) {
        narrow += c >= u'A' && c <= u'Z' ? static_cast<char>(c + 32) : static_cast<char>(c);
    }
    return narrow;
}

/// The place of a path in Windows syntax.
inline std::filesystem::path Native(std::u16string path) {
#ifndef _WIN32
    path = path.substr(2);
    std::replace(path.begin(), path.end(), u'\\', u'/');
#endif
    return path;
}

inline std::u16string PathOf(Platform::Module module) {
    char16_t path[1000] = {};
    Platform::GetModuleFileName(module, path, 1000);
    return path;
}

inline std::u16string ProgramFolder() {
    const std::u16string program = PathOf(nullptr);
    return program.substr(0, program.rfind(u'\\'));
}

inline std::u16string SystemFolder() {
    char16_t path[1000] = {};
    Platform::GetSystemDirectory(path, 1000);
    return path;
}

/// One value. In its text `{R}` is the test's folder and `|` ends a string of several.
struct Value {
    std::uint32_t root;
    const char16_t* key;
    const char16_t* name;
    std::uint32_t type;
    std::u16string text;
    std::uint32_t number = 0;
    bool terminated = true;
};

/// A folder, a registry and the notes of the libraries in the folder.
class CFixture {
public:
    CFixture()
        : place(Native(std::u16string(folder.Path().View()))), registry(place), notes((place / "notes").string()) {
        SetVariable("PROVIDER_NOTES", notes);
        SetVariable("PROVIDER_ROOT", place.string());
        SetVariable("PROVIDER_COMPONENT", "");
        SetVariable("LC_ALL", "C");
#ifndef _WIN32
        Copy(Native(SystemFolder() + u"\\mapi32.dll")); // Windows has its own
#endif
    }
    ~CFixture() {
        std::error_code ignored;
        std::filesystem::remove(Native(ProgramFolder() + u"\\mapi32.dll"), ignored);
    }
    CFixture(const CFixture&) = delete;
    CFixture& operator=(const CFixture&) = delete;

    std::u16string Whole(std::u16string_view name) const {
        return name.starts_with(u"program\\") ? ProgramFolder() + std::u16string(name.substr(7))
                                              : std::u16string((folder / u"").View()) + std::u16string(name);
    }

    /// Makes the library of that name; one that ends in a separator is an empty folder.
    void Make(std::u16string_view name) const {
        if (name.ends_with(u'\\')) {
            std::filesystem::create_directories(Native(Whole(name)));
        } else {
            Copy(Native(Whole(name)));
        }
    }

    void Set(const Value& value) const {
        Platform::RegistryKey key = nullptr;
        ASSERT_EQ(Platform::RegCreateKeyEx(Platform::RootKey(value.root), value.key, 0, Platform::KeyReadWrite, key),
                  0U);
        std::u16string text = value.text;
        const std::size_t mark = text.find(u"{R}\\");
        text = mark == std::u16string::npos ? text : text.replace(mark, 4, Whole(u""));
        std::replace(text.begin(), text.end(), u'|', u'\0');
        const auto size = static_cast<std::uint32_t>((text.size() + (value.terminated ? 1 : 0)) * sizeof(char16_t));
        text += value.terminated ? u"" : u"x"; // a terminator behind the text would be taken along
        const bool isNumber = value.type == Platform::RegDword;
        EXPECT_EQ(Platform::RegSetValueEx(key, value.name, value.type,
                                          isNumber ? static_cast<const void*>(&value.number) : text.c_str(),
                                          isNumber ? sizeof(value.number) : size),
                  0U);
        Platform::RegCloseKey(key);
    }

    void Note(const std::string& line) const {
        std::ofstream(notes, std::ios::app | std::ios::binary) << line << '\n';
    }

    /// The notes since the last time, but for those of the system's library, which Windows has its own of.
    std::vector<std::string> TakeNotes() const {
        std::vector<std::string> lines;
        std::ifstream file(notes, std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            line = Short(std::u16string(line.begin(), line.end()));
            if (line.find("load system\\") == std::string::npos) {
                lines.push_back(line);
            }
        }
        file.close();
        std::filesystem::remove(notes);
        return lines;
    }

    /// In lower case, with short names of folders.
    std::string Short(std::u16string_view path) const {
        std::string text = Lower(path);
        const std::string names[][2] = {{Lower(Whole(u"")), ""},
                                        {Lower(ProgramFolder()) + "\\", "program\\"},
                                        {Lower(SystemFolder()) + "\\", "system\\"}};
        for (const auto& [whole, brief] : names) {
            const std::size_t found = text.find(whole);
            if (found != std::string::npos) {
                text.replace(found, whole.size(), brief);
            }
        }
        return text;
    }

    /// What a search gave, which is unloaded.
    std::string Take(Platform::Module module) const {
        std::string path = module ? Short(PathOf(module)) : "none";
        if (module) {
            Platform::FreeLibrary(module);
        }
        return path;
    }

private:
    static void Copy(const std::filesystem::path& target) {
        std::filesystem::create_directories(target.parent_path());
        std::filesystem::copy_file(TestFilePlace(NOTING_PROVIDER), target,
                                   std::filesystem::copy_options::overwrite_existing);
    }

    CTestFolder folder;
    std::filesystem::path place;
    CScratchRegistry registry;
    std::string notes;
};

// Keys and values of the registry that several tests set.
constexpr const char16_t* Mail = u"Software\\Clients\\Mail";
constexpr const char16_t* Client = u"Software\\Clients\\Mail\\Client";
constexpr const char16_t* Outlook = u"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const char16_t* Windows = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr const char16_t* AppPath = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\OUTLOOK.EXE";

inline const Value DefaultClient{Machine, Mail, u"", Platform::RegSz, u"Client"};
inline const Value ClientPathEx{Machine, Client, u"DllPathEx", Platform::RegSz, u"{R}\\Client\\ex.dll"};
inline const Value ClientPath{Machine, Client, u"DllPath", Platform::RegSz, u"{R}\\Client\\plain.dll"};
inline const Value ClientComponent{Machine, Client, u"MSIComponentID", Platform::RegSz, u"{Id}"};
inline const Value ClientLanguage{Machine, Client, u"MSIApplicationLCID", Platform::RegSz, u"1031"};
inline const Value OutlookProgram{Machine, AppPath, u"", Platform::RegSz, u"{R}\\Office\\OUTLOOK.EXE"};
inline const Value Common{Machine, Windows, u"CommonFilesDir", Platform::RegSz, u"{R}\\Common"};
inline const Value GermanPlace{User, Outlook, u"MSIApplicationLCID", Platform::RegMultiSz, u"Lang|Id|"};
inline const Value German{User, u"Software\\Lang", u"Id", Platform::RegDword, u"", 1031};

/// As if the process had just begun.
inline void Forget() {
    if (const Platform::Module module = Mapi::providerModule.exchange(nullptr)) {
        Platform::FreeLibrary(module);
    }
}
