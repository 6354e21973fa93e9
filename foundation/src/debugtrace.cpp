#include "foundation/inc/debugtrace.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/errors.h"
#include "platform/inc/debug.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

const char16_t* FormatLine(CRoomyBuffer& buffer, const char16_t* format,
                           std::initializer_list<CFormatArgument> arguments) {
    const auto count = static_cast<std::int32_t>(arguments.size());
    for (std::int32_t room = CRoomyBuffer::BuiltInSize;; room *= 2) {
        buffer.SetSize(room);
        const std::int32_t length = FormatText(buffer.Data(), room - 1, format, arguments.begin(), count);
        if (length >= 0) {
            buffer.Data()[length] = u'\0';
            return buffer.Data();
        }
    }
}

void DebugTraceList(const char16_t* format, std::initializer_list<CFormatArgument> arguments) {
    if (!HasDebugFlag(DebugSilenceTrace)) {
        CRoomyBuffer buffer;
        Platform::OutputDebugString(FormatLine(buffer, format, arguments));
    }
}

void WriteDebugOutput(const char16_t* text) {
    if (HasDebugFlag(DebugReportMemoryErrorInMessageBox)) {
        AskToBreak(text);
    } else {
        Platform::OutputDebugString(text);
    }
}

void AskToBreak(const char16_t* text) {
    constexpr std::uint32_t style = Platform::MbOkCancel | Platform::MbIconHand;
    if (Platform::MessageBox(nullptr, text, FoundationTitle, style) == Platform::IdCancel) {
        Platform::DebugBreak();
    }
}

} // namespace Tsx
