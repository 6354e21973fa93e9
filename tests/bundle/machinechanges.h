// What the runs need of the registry: the recording library as mail client, settings of the foundation. All of it is
// taken back.
#pragma once

#include "tests/bundle/caselist.h"
#include <string>

/// The machine's registry, as it was found, is restored at the end; after a run that was killed, by the next one, which
/// finds what it left in the file `journal`. Without that file nothing starts: std::runtime_error.
class CMachineChanges {
public:
    explicit CMachineChanges(std::wstring journal);
    ~CMachineChanges();
    CMachineChanges(const CMachineChanges&) = delete;
    CMachineChanges& operator=(const CMachineChanges&) = delete;

    /// Why the client cannot be registered; empty if it can. That belongs to the whole machine, so that an elevated
    /// process is needed.
    const std::string& WhyNoClient() const { return noClient; }
    /// Why the foundation's settings cannot be changed: nobody's own may be lost.
    const std::string& WhyNoSettings() const { return noSettings; }

    /// Makes that the default mail client; `extended` may be empty.
    void RegisterClient(const std::wstring& simple, const std::wstring& extended);
    /// Puts these in the place of all settings.
    void SetSettings(const Values& user, const Values& machine);

    /// Takes everything back.
    void Restore();

private:
    std::wstring journal;
    std::string noClient, noSettings;
};
