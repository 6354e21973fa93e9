// lifeprobe COMMAND [FOLDER]: starts the foundation and tells what came of it, for the suites that look at its life
// from outside.
#include "foundation/inc/commandlinefo.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/modulelist.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/process.h"
#include <clocale>
#include <cstdio>

using namespace Tsx;

namespace {

void Print(const char* what, const CUnicodeString& text) {
    std::printf("%s %s\n", what, text.ToNarrow(AnsiCodePage).Text());
}

void Fail() {
    GenerateLastErrorException(5);
}

/// What the settings came to, and a failure that may stop.
void TellSettings() {
    const std::string_view locale = std::setlocale(LC_ALL, nullptr);
    std::printf("flags %x, locale %s, modes %u %u\n", GetDebugFlags(), locale == "C" ? "kept" : "changed",
                GetAssertStopMode(), GetErrorStopMode());
    Print("temp", TemporaryFolder);
    std::fflush(stdout);
    Fail();
}

/// A module that is linked in and can't start: that is final.
void FailToStart() {
    AddStaticModule(Platform::Module(), &Fail, &Fail);
    for (int i = 0; i < 2; ++i) {
        const bool stands = InitializeFoundation(nullptr, nullptr);
        std::printf("%s, state %d\n", stands ? "stands" : "failed", GetFoundationState());
    }
    DeinitializeFoundation();
    std::printf("state %d\n", GetFoundationState());
}

/// A file in memory is left behind for the stop to sweep.
void LeaveMemoryFile() {
    CFile().Open(CVirtualFileSystem::GetRootName() + u"a\\b.txt", OM_Write | OM_ShareExclusive | OM_Create);
}

/// A start that fails has been shown and ends as a failure, and so does an action that fails.
void RunCommand(const CUnicodeString& command, const CUnicodeString& folder) {
    if (command == u"badmodule") {
        return FailToStart();
    }
    if (command == u"language") {
        GetResourceBase().AddPrefix(folder, u"corvane");
    }
    if (!InitializeFoundation(nullptr, nullptr)) {
        GenerateUserException();
    }
    const bool done = RunAndShowFailure([&command] {
        command == u"settings" ? TellSettings()
        : command == u"files"  ? LeaveMemoryFile()
                               : Print("help", GetMessage(MSG_INTERNAL_ERROR));
    });
    DeinitializeFoundation();
    if (!done) {
        GenerateUserException();
    }
}

} // namespace

std::int32_t ProgramMain() {
    CThreadErrorMode& mode = *ThreadErrorMode.Get();
    if (mode.ErrorReported) {
        return -1;
    }
    mode.NoExceptions = false;
    const bool done = RunAndShowFailure([] {
        CArray<CUnicodeString> words;
        SplitCommandLine(words, Platform::GetCommandLine());
        RunCommand(words[1], words.Size() > 2 ? words[2] : u"");
    });
    return done ? 0 : -1;
}
