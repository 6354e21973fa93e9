// A message handler that keeps what it is shown.
#pragma once

#include "foundation/inc/messagehandlers.h"
#include <vector>

class CRecordingHandler : public Tsx::CMessageHandler {
public:
    std::vector<Tsx::CUnicodeString> texts;

    std::int32_t ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*, std::uint32_t style) override {
        texts.emplace_back(text);
        return Tsx::GetDefaultButton(style);
    }
};
