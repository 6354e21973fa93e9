// lifeprobe COMMAND [FILE]: starts the foundation and tells what came of it, for the suite that looks at its life from
// outside.
#include "foundation/inc/commandlinefo.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/file.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/modulelist.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/process.h"
#include <clocale>
#include <cstdio>
#include <cstdlib>

using namespace Tsx;

namespace {

/// Prints what it is shown.
class CPrintingHandler : public CMessageHandler {
public:
    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        std::printf("shown: %s\n", CUnicodeString(text).ToNarrow(AnsiCodePage).Text());
        return GetDefaultButton(style);
    }
};

void Print(const char* what, const CUnicodeString& text) {
    std::printf("%s %s\n", what, text.ToNarrow(AnsiCodePage).Text());
}

/// What the settings came to.
void TellSettings() {
    InitializeFoundation(nullptr, nullptr);
    const std::string_view locale = std::setlocale(LC_ALL, nullptr);
    std::printf("flags %x, locale %s\n", GetDebugFlags(), locale == "C" ? "kept" : "changed");
    Print("temp", TemporaryFolder);
    DeinitializeFoundation();
}

void TellFolders() {
    InitializeFoundation(nullptr, nullptr);
    Print("local", LocalApplicationFolder);
    Print("roaming", ApplicationFolder);
    Print("common", CommonApplicationFolder);
    DeinitializeFoundation();
}

/// The stop modes as they are read, and a failure that may stop.
void TellStopModes() {
    std::printf("%u %u\n", GetAssertStopMode(), GetErrorStopMode());
    std::fflush(stdout);
    try {
        GenerateLastErrorException(5);
    } catch (CException* exception) {
        delete exception;
    }
}

void Fail() {
    GenerateLastErrorException(5);
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

/// A start and a stop: 0, or 3 if the start has failed.
void StartAndStop() {
    if (!InitializeFoundation(nullptr, nullptr)) {
        std::exit(GetFoundationState());
    }
    DeinitializeFoundation();
}

/// Keeps everybody else from a file until the standard input ends.
void Hold(const CUnicodeString& path) {
    CFile file;
    file.Open(path, OM_Write | OM_ShareDenyRead | OM_ShareDenyWrite | OM_Create | OM_NoTruncate);
    std::puts("held");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
}

std::int32_t RunCommand() {
    CArray<CUnicodeString> words;
    SplitCommandLine(words, Platform::GetCommandLine());
    if (words.Size() == 3 && words[1] == u"hold") {
        Hold(words[2]);
        return 0;
    }
    struct Row {
        const char16_t* name;
        void (*action)();
    };
    constexpr Row rows[] = {{u"settings", &TellSettings},
                            {u"folders", &TellFolders},
                            {u"modes", &TellStopModes},
                            {u"badmodule", &FailToStart},
                            {u"start", &StartAndStop}};
    for (const Row& row : rows) {
        if (words.Size() == 2 && words[1] == row.name) {
            row.action();
            return 0;
        }
    }
    return 1;
}

} // namespace

std::int32_t ProgramMain() {
    CThreadErrorMode& mode = *ThreadErrorMode.Get();
    if (mode.ErrorReported) {
        return 1;
    }
    mode.NoExceptions = false;
    CPrintingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::int32_t exitCode = 1;
    ShowFailure([&exitCode] { exitCode = RunCommand(); });
    return exitCode;
}
