#include "mailsystem/Delivery.h"

#include "mailsystem/DraftFolder.h"
#include "mailsystem/MailClient.h"
#include <cstdio>

namespace MailSystem {

namespace {

std::string Save(const Draft& draft) {
    const DraftMessage message(draft);
    DraftFile file(DraftFolder());
    message.WriteTo(file);
    return file.Keep();
}

} // namespace

void Deliver(const Draft& draft, EShow show) {
    const std::string path = Save(draft);
    std::fprintf(stderr, "Draft saved: %s\n", path.c_str());
    if (show == EShow::InClient) {
        OpenInMailClient(draft, path);
    }
}

} // namespace MailSystem
