#include "mailsystem/Delivery.h"

#include "mailsystem/DraftFolder.h"
#include "mailsystem/MailClient.h"
#include "mailsystem/MailFailure.h"
#include "mapi/SimpleMapi.h"
#include <cstdio>
#include <exception>
#include <new>

namespace MailSystem {

namespace {

std::string Save(const Draft& draft) {
    const DraftMessage message(draft);
    DraftFile file(DraftFolder());
    message.WriteTo(file);
    return file.Keep();
}

std::uint32_t Refuse(std::uint32_t code, const char* reason) {
    std::fprintf(stderr, "Draft not saved: %s\n", reason);
    return code;
}

} // namespace

std::uint32_t Deliver(const std::function<Draft()>& make, EShow show) {
    try {
        const Draft draft = make();
        const std::string path = Save(draft);
        std::fprintf(stderr, "Draft saved: %s\n", path.c_str());
        if (show == EShow::InClient) {
            OpenInMailClient(draft, path);
        }
        return Mapi::SuccessSuccess;
    } catch (const MailFailure& failure) {
        return Refuse(failure.Code(), failure.what());
    } catch (const std::bad_alloc&) {
        return Refuse(Mapi::ErrorInsufficientMemory, "out of memory");
    } catch (const std::exception& failure) {
        return Refuse(Mapi::ErrorFailure, failure.what());
    }
}

} // namespace MailSystem
