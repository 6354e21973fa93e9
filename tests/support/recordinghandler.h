// A message handler that keeps what it is shown, and what threads of their own show or do.
#pragma once

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/threadobject.h"
#include "tests/support/text.h"
#include <atomic>
#include <thread>
#include <vector>

/// Answers with the default button.
class CRecordingHandler : public Tsx::CMessageHandler {
public:
    std::vector<Tsx::CUnicodeString> texts;
    std::vector<Tsx::CUnicodeString> boxes; // "title: text style", the style in hexadecimal digits

    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override {
        texts.emplace_back(text);
        boxes.push_back(Tsx::CUnicodeString::Format(u"%s: %s %x", title, text, style));
        return Tsx::GetDefaultButton(style);
    }
};

/// How many failures a thread shows that must not throw, while it runs an action that throws nothing.
template <class TAction>
std::size_t ShownInstead(TAction action) {
    CRecordingHandler handler;
    const Tsx::CMessageHandlerScope scope(&handler);
    std::thread([&] {
        Tsx::ThreadErrorMode.Get()->NoExceptions = true;
        action();
    }).join();
    return handler.texts.size();
}

/// Each call is an internal error: raised here, and shown on a thread that must not throw.
inline void ExpectRefused(std::initializer_list<std::function<void()>> calls) {
    for (const auto& call : calls) {
        EXPECT_TRUE(Raised<Tsx::CInternalError>(call)) << "call " << &call - calls.begin();
        EXPECT_EQ(ShownInstead(call), 1U) << "call " << &call - calls.begin();
    }
}

/// Runs an action on that many threads, all at once, each told its number. Nothing may leave it.
template <class TAction>
void OnThreads(int count, TAction action) {
    std::atomic<int> missing = count; // no std::latch, some of whose waiters are not woken with the mingw run-time
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            Tsx::ThreadErrorMode.Get()->NoExceptions = false;
            for (--missing; missing > 0;) {
                std::this_thread::yield();
            }
            try {
                action(number);
            } catch (Tsx::CException* exception) {
                ADD_FAILURE() << Readable(exception->GetMessageText().View());
                delete exception;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
