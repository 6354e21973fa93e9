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

// Outside the unnamed namespace: the compiler must not know that there is one override alone.
struct CHalfBuilt;
CHalfBuilt* volatile underConstruction = nullptr; // the compiler must not see whom the call below meets

struct CHalfBuilt {
    CHalfBuilt() {
        underConstruction = this;
        CHalfBuilt* const object = underConstruction;
        object->Answer();
    }
    virtual ~CHalfBuilt() = default;
    virtual void Answer() = 0;
};

struct CBuilt : CHalfBuilt {
    void Answer() override {}
};

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

// A failure inside the report of a failure, on a thread that must not throw. The handler may raise while it shows the
// end.
void DoubleError(bool raisesLater) {
    CFailingHandler handler;
    handler.raisesLater = raisesLater;
    const CMessageHandlerScope scope(&handler);
    ThreadErrorMode.Get()->NoExceptions = true;
    FailAssertion(u"src\\outer", 1);
}

void DoubleErrorInException() {
    CFailingHandler handler;
    const CMessageHandlerScope scope(&handler);
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

void CallPure() {
    InitializeFoundation(nullptr, nullptr);
    const CBuilt object;
}

// A failure that nobody catches.
void LeaveUncaught(bool isStopped) {
    InitializeFoundation(nullptr, nullptr);
    if (isStopped) {
        DeinitializeFoundation();
    }
    throw 1;
}

} // namespace

std::int32_t ProgramMain() {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // nothing is lost by an abort
    std::signal(SIGABRT, [](int) { std::printf("box %sabort\n", ShownBoxes.c_str()); });
    ThreadErrorMode.Get()->NoExceptions = false;
    const std::u16string line = Platform::GetCommandLine();
    const std::map<std::u16string, void (*)()> ends = {{u"double", [] { DoubleError(false); }},
                                                       {u"raising", [] { DoubleError(true); }},
                                                       {u"exception", &DoubleErrorInException},
                                                       {u"pool", &ExhaustPool},
                                                       {u"purecall", &CallPure},
                                                       {u"uncaught", [] { LeaveUncaught(false); }},
                                                       {u"silent",
                                                        [] {
                                                            FatalNoMessageBox = true;
                                                            LeaveUncaught(false);
                                                        }},
                                                       {u"late", [] { LeaveUncaught(true); }}};
    ends.at(line.substr(line.rfind(u' ') + 1))();
    return 1; // none of them comes back
}
