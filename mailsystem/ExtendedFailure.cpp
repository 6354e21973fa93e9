// How a failure of the Extended side reaches the caller with its reason: a result has no room for words.
#include "mailsystem/ExtendedBase.h"
#include "mailsystem/MailFailure.h"
#include "platform/linux/text/nativetext.h"

namespace MailSystem {

namespace {

class FailureInfo final : public Counted<Platform::IErrorInfo> {
public:
    explicit FailureInfo(std::u16string description) : text(std::move(description)) {}

    std::int32_t GetGUID(Platform::Guid* interfaceId) override {
        *interfaceId = {};
        return Platform::SOk;
    }
    std::int32_t GetSource(char16_t** source) override { return HandOutText(u"Corvane", source); }
    std::int32_t GetDescription(char16_t** description) override { return HandOutText(text.c_str(), description); }
    std::int32_t GetHelpFile(char16_t** file) override {
        *file = nullptr;
        return Platform::SOk;
    }
    std::int32_t GetHelpContext(std::uint32_t* context) override {
        *context = 0;
        return Platform::SOk;
    }

private:
    std::u16string text;

    static std::int32_t HandOutText(const char16_t* from, char16_t** to) {
        *to = Platform::SysAllocString(from);
        return *to ? Platform::SOk : Mapi::ResultOutOfMemory;
    }
};

thread_local Reference<FailureInfo> latest;

} // namespace

std::int32_t FailureResult(const std::exception& failure) {
    latest = {};
    try {
        latest = Reference<FailureInfo>::Adopt(
            new FailureInfo(u"Draft not saved: " + Platform::Utf16Text(ReasonOf(failure))));
    } catch (const std::bad_alloc&) {
        // The caller gets the result without a text; that of an earlier failure is gone.
    }
    return CodeOf(failure).extended;
}

} // namespace MailSystem

/// What the program asks for the text of the calling thread's latest failure, by the name that COM's own library gives
/// it. The reference becomes the caller's; null if there is none.
extern "C" PLATFORM_EXPORT std::int32_t GetErrorInfo(std::uint32_t, Platform::IErrorInfo** info) {
    using namespace MailSystem;
    *info = latest.Get();
    if (!*info) {
        return Platform::SFalse;
    }
    (*info)->AddRef();
    latest = {};
    return Platform::SOk;
}
