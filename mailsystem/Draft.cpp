#include "mailsystem/Draft.h"

#include "mailsystem/HeaderText.h"
#include "mapi/SimpleMapi.h"
#include <algorithm>
#include <string_view>

namespace MailSystem {

namespace {

constexpr const char* Charset = "utf-8";

using FormatOptions = std::unique_ptr<GMimeFormatOptions, Releaser<&g_mime_format_options_free>>;
using DateTime = std::unique_ptr<GDateTime, Releaser<&g_date_time_unref>>;

template <class T>
GMimeObject* Object(const ObjectPointer<T>& pointer) {
    return reinterpret_cast<GMimeObject*>(pointer.get());
}

ObjectPointer<GMimeMessage> NewMessage() {
    static const bool initialised = (g_mime_init(), true); // for good, as the library stays loaded
    static_cast<void>(initialised);
    return ObjectPointer<GMimeMessage>(g_mime_message_new(TRUE));
}

// An address has no place where its line may be broken. What is longer than a line is shown as a name, which may be
// encoded and folded, with an address that no mail client sends to.
ObjectPointer<InternetAddress> MakeAddress(const std::string& name, const std::string& address) {
    constexpr std::size_t mostBytes = 900; // of the 998 that a line may have
    if (address.size() > mostBytes) {
        const std::string whole = name.empty() ? address : name + " <" + address + ">";
        return ObjectPointer<InternetAddress>(internet_address_mailbox_new(whole.c_str(), "\"too long\""));
    }
    return ObjectPointer<InternetAddress>(
        internet_address_mailbox_new(name.empty() ? nullptr : name.c_str(), address.c_str()));
}

void AddMailbox(GMimeMessage* message, GMimeAddressType type, const Mailbox& mailbox) {
    const bool nameOnly = AddressSyntax(mailbox.address).empty();
    const std::string address = AddressSyntax(nameOnly ? mailbox.name : mailbox.address);
    if (address.empty()) {
        return;
    }
    const ObjectPointer<InternetAddress> entry = MakeAddress(nameOnly ? "" : FieldText(mailbox.name), address);
    internet_address_set_charset(entry.get(), Charset);
    internet_address_list_add(g_mime_message_get_addresses(message, type), entry.get());
}

// CR LF at the end of each line, whatever ends it in `body`.
std::string WithNetworkLineEnds(std::string_view body) {
    std::string text;
    text.reserve(body.size() + body.size() / 32);
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] != '\r' && body[i] != '\n') {
            text += body[i];
            continue;
        }
        text += "\r\n";
        if (body.substr(i, 2) == "\r\n") {
            ++i;
        }
    }
    return text;
}

ObjectPointer<GMimePart> MakeBody(const std::string& body) {
    ObjectPointer<GMimePart> part(g_mime_part_new_with_type("text", "plain"));
    g_mime_object_set_content_type_parameter(Object(part), "charset", Charset);
    const std::string text = WithNetworkLineEnds(ValidText(body));
    const ObjectPointer<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(text.data(), text.size()));
    const ObjectPointer<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part.get(), content.get());
    g_mime_part_set_content_encoding(part.get(),
                                     g_mime_part_get_best_content_encoding(part.get(), GMIME_ENCODING_CONSTRAINT_7BIT));
    return part;
}

// Left to itself, GMime takes the smallest charset that will do, and Latin-1 is not what every reader expects here.
void SetCharset(GMimeParamList* parameters, const char* name) {
    g_mime_param_set_charset(g_mime_param_list_get_parameter(parameters, name), Charset);
}

ObjectPointer<GMimePart> MakeFilePart(const AttachmentFile& file) {
    const std::string& type = file.MediaType();
    const std::size_t slash = type.find('/');
    ObjectPointer<GMimePart> part(
        g_mime_part_new_with_type(type.substr(0, slash).c_str(), type.substr(slash + 1).c_str()));
    // Base64 whatever the type: a text keeps its very bytes too.
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    g_mime_part_set_filename(part.get(), file.Name().c_str());
    SetCharset(g_mime_content_type_get_parameters(g_mime_object_get_content_type(Object(part))), "name");
    GMimeContentDisposition* disposition = g_mime_object_get_content_disposition(Object(part));
    SetCharset(g_mime_content_disposition_get_parameters(disposition), "filename");
    return part;
}

void WriteBase64(const AttachmentFile& file, DraftFile& output) {
    constexpr std::size_t lineBytes = 57; // 76 characters, the most that a line may have
    constexpr std::size_t lineCount = 1024;
    std::vector<unsigned char> bytes(lineBytes * lineCount);
    std::string text;
    AttachmentReader reader = file.Open();
    while (const std::size_t count = reader.Read(bytes)) {
        text.clear();
        for (std::size_t start = 0; start < count; start += lineBytes) {
            const GlibText line(g_base64_encode(&bytes[start], std::min(lineBytes, count - start)));
            text.append(line.get()).append("\r\n");
        }
        output.Write(text);
    }
}

} // namespace

std::string WithoutKind(std::string address) {
    constexpr std::string_view kind = "SMTP:";
    const bool present = g_ascii_strncasecmp(address.c_str(), kind.data(), kind.size()) == 0;
    return present ? address.substr(kind.size()) : std::move(address);
}

std::vector<Mailbox>& Draft::ListFor(std::uint32_t recipientClass) {
    switch (recipientClass) {
    case Mapi::RecipientClassCc:
        return cc;
    case Mapi::RecipientClassBcc:
        return bcc;
    default:
        return to;
    }
}

DraftMessage::DraftMessage(const Draft& draft) : message(NewMessage()), body(MakeBody(draft.body)) {
    AddFields(draft);
    if (draft.attachments.empty()) {
        g_mime_message_set_mime_part(message.get(), Object(body));
        return;
    }
    for (const Attachment& attachment : draft.attachments) {
        AttachmentFile file(attachment);
        ObjectPointer<GMimePart> part = MakeFilePart(file);
        fileParts.push_back({std::move(file), std::move(part)});
    }
    parts.reset(g_mime_multipart_new_with_subtype("mixed"));
    g_mime_message_set_mime_part(message.get(), Object(parts));
}

void DraftMessage::AddFields(const Draft& draft) {
    // The field by which mail clients know a message that is to be edited rather than shown.
    g_mime_object_set_header(Object(message), "X-Unsent", "1", Charset);
    const DateTime now(g_date_time_new_now_local());
    g_mime_message_set_date(message.get(), now.get());
    const GlibText identity(g_mime_utils_generate_message_id(g_get_host_name()));
    g_mime_message_set_message_id(message.get(), identity.get());
    if (!draft.subject.empty()) {
        g_mime_message_set_subject(message.get(), FieldText(draft.subject).c_str(), Charset);
    }
    AddMailbox(message.get(), GMIME_ADDRESS_TYPE_FROM, draft.from);
    for (const Mailbox& mailbox : draft.to) {
        AddMailbox(message.get(), GMIME_ADDRESS_TYPE_TO, mailbox);
    }
    for (const Mailbox& mailbox : draft.cc) {
        AddMailbox(message.get(), GMIME_ADDRESS_TYPE_CC, mailbox);
    }
    for (const Mailbox& mailbox : draft.bcc) {
        AddMailbox(message.get(), GMIME_ADDRESS_TYPE_BCC, mailbox);
    }
}

// GMime makes every field and the body. The files go round it: its streams pass on a failed write as a short count at
// times, and keep each file open for as long as the message lives.
void DraftMessage::WriteTo(DraftFile& output) const {
    const FormatOptions options(g_mime_format_options_new());
    g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
    if (!parts) {
        output.Write(GlibText(g_mime_object_to_string(Object(message), options.get())).get());
        return;
    }
    const std::string boundary = std::string("--") + g_mime_multipart_get_boundary(parts.get());
    output.Write(GlibText(g_mime_object_get_headers(Object(message), options.get())).get());
    output.Write("\r\n" + boundary + "\r\n");
    output.Write(GlibText(g_mime_object_to_string(Object(body), options.get())).get());
    for (const FilePart& filePart : fileParts) {
        output.Write("\r\n" + boundary + "\r\n");
        output.Write(GlibText(g_mime_object_get_headers(Object(filePart.part), options.get())).get());
        output.Write("\r\n");
        WriteBase64(filePart.file, output);
    }
    output.Write("\r\n" + boundary + "--\r\n");
}

} // namespace MailSystem
