// endings NAME: ends the process in one of the ways that leave no test program to tell of it.
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/process.h"
#include "tests/support/boxes.h"
#include <csignal>
#include <cstdio>
#include <map>

using namespace Tsx;

// What a compiler calls in the place of a function that nobody has overridden.
extern "C" [[noreturn]] void __cxa_pure_virtual(); // NOLINT(bugprone-reserved-identifier): the name is the run-time's

namespace {

/// Prints what it is shown, and fails each time.
struct CFailingHandler : CMessageHandler {
    bool raisesLater = false;
    int shown = 0;

    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        std::printf("shown with style %u: %s\n", style, CUnicodeString(text).ToNarrow(0).Text());
        if (raisesLater && ++shown > 1) {
            GenerateUserException();
        }
        FailAssertion(u"src\\inner", 2);
        return 0;
    }
};

// A failure inside the report of a failure: on a thread that must not throw, or of an exception. The handler may raise
// while it shows the end.
void FailTwice(bool throws, bool raisesLater) {
    CFailingHandler handler;
    handler.raisesLater = raisesLater;
    const CMessageHandlerScope scope(&handler);
    ThreadErrorMode.Get()->NoExceptions = !throws;
    try {
        FailAssertion(u"src\\outer", 1);
    } catch (CException* exception) {
        ThreadErrorMode.Get()->NoExceptions = true;
        DisplayException(exception);
        delete exception;
    }
}

// Memory exceptions that nobody gives back.
void ExhaustPool() {
    for (int kept = 0;; ++kept) {
        try {
            std::printf("%d kept\n", kept);
            GenerateMemoryException();
        } catch (CMemoryException*) {
        }
    }
}

// With a failure that nobody catches, for one.
void Leave(void (*end)()) {
    InitializeFoundation(nullptr, nullptr);
    end();
    throw 1;
}

} // namespace

std::int32_t ProgramMain() {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // nothing is lost by an abort
    std::signal(SIGABRT, [](int) { std::printf("box %sabort\n", ShownBoxes.c_str()); });
    ThreadErrorMode.Get()->NoExceptions = false;
    const std::u16string line = Platform::GetCommandLine();
    const std::map<std::u16string, void (*)()> ends = {
        {u"double", [] { FailTwice(false, false); }},
        {u"raising", [] { FailTwice(false, true); }},
        {u"exception", [] { FailTwice(true, false); }},
        {u"pool", &ExhaustPool},
        {u"purecall", [] { Leave(&__cxa_pure_virtual); }},
        {u"uncaught", [] { Leave([] {}); }},
        {u"silent", [] { Leave([] { FatalNoMessageBox = true; }); }},
        {u"late", [] { Leave(&DeinitializeFoundation); }},
    };
    ends.at(line.substr(line.rfind(u' ') + 1))();
    return 1; // none of them comes back
}
