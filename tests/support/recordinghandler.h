// A message handler that keeps what it is shown, and answers with the default button.
#pragma once

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/threadobject.h"
#include <thread>
#include <vector>

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
