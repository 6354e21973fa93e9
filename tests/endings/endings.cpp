// endings NAME: ends the process in one of the ways that leave no test program to tell of it.
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/process.h"
#include "tests/support/boxes.h"
#include <csignal>
#include <cstdio>
#include <string_view>

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
class CFailingHandler : public CMessageHandler {
public:
    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        std::printf("shown with style %u: %s\n", style, CUnicodeString(text).ToNarrow(0).Text());
        std::fflush(stdout);
        if (raisesLater && ++shown > 1) {
            GenerateUserException();
        }
        FailAssertion(u"src\\inner", 2);
        return 0;
    }

    bool raisesLater = false;

private:
    int shown = 0;
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

// A failure inside the report of an exception.
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

// The process is about to end: what its boxes said, and that it ends in this way.
void OnAbort(int) {
    std::printf("box %sabort\n", ShownBoxes.c_str());
    std::fflush(stdout);
}

// Memory exceptions that nobody gives back.
void ExhaustPool() {
    for (int kept = 0;; ++kept) {
        try {
            std::printf("%d kept\n", kept);
            std::fflush(stdout);
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

struct Row {
    std::u16string_view name;
    void (*end)();
};

constexpr Row Rows[] = {{u"double", [] { DoubleError(false); }},
                        {u"raising", [] { DoubleError(true); }},
                        {u"exception", &DoubleErrorInException},
                        {u"pool", &ExhaustPool},
                        {u"purecall", &CallPure},
                        {u"uncaught", [] { LeaveUncaught(false); }},
                        {u"silent", [] { FatalNoMessageBox = true, LeaveUncaught(false); }},
                        {u"late", [] { LeaveUncaught(true); }}};

} // namespace

std::int32_t ProgramMain() {
    std::signal(SIGABRT, &OnAbort);
    ThreadErrorMode.Get()->NoExceptions = false;
    const std::u16string_view line = Platform::GetCommandLine();
    for (const Row& row : Rows) {
        if (line.ends_with(row.name)) {
            row.end();
        }
    }
    return 1; // none of them comes back
}
