// What the runs need of the registry: the recording library as mail client, settings of the foundation. All of it is
// taken back.
#pragma once

#include <filesystem>
#include <map>
#include <string>

/// A file's content, as bytes and as UTF-16; empty if it can't be read.
std::string ReadBytes(const std::filesystem::path& path);
std::wstring ReadText(const std::filesystem::path& path);

/// A run of the bundle: its values by their keys, some of them several times. bundle.py has the keys.
using TestCase = std::multimap<std::wstring, std::wstring>;

/// The machine's registry, as it was found, is restored at the end; after a run that was killed, by the next one, which
/// finds what it left in the file `journal`. Without that file nothing starts: std::runtime_error.
class CMachineChanges {
public:
    explicit CMachineChanges(std::filesystem::path journal);
    ~CMachineChanges() { Restore(); }
    CMachineChanges(const CMachineChanges&) = delete;
    CMachineChanges& operator=(const CMachineChanges&) = delete;

    /// Why nothing can be changed; empty if it can. The client belongs to the whole machine, so that an elevated
    /// process is needed; and nobody's own settings of the foundation may be lost.
    const std::wstring& WhyNot() const { return reason; }

    /// Makes that the default mail client; `extended` may be empty.
    void RegisterClient(const std::wstring& simple, const std::wstring& extended);
    /// Puts those of the run ("NAME=VALUE" under `user` and `machine`) in the place of all settings.
    void SetSettings(const TestCase& row);

private:
    const std::filesystem::path journal;
    std::wstring reason;

    void Restore();
};
