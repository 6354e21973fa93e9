#include "app/CorvaneApplication.h"

#include "foundation/inc/filesystem.h"
#include "mapi/ExtendedMapi.h"
#include "mapi/MapiMailSender.h"

using namespace Tsx;
using Console::CConsoleArgument;

CMessageName ERR_NO_RECIPIENTS(u"ERR_NO_RECIPIENTS");
CMessageName MSG_HELP(u"MSG_HELP");

namespace {

bool FileExists(const CUnicodeString& path) {
    return FileSystem::GetFileSystem(path).CheckFile(path, FA_Exists);
}

CNamedAddress ParseAddress(const CUnicodeString& text) {
    CNamedAddress parsed;
    CCorvaneApplication::SplitAddress(text, parsed.Name, parsed.Address);
    return parsed;
}

} // namespace

void CCorvaneApplication::SplitAddress(const CUnicodeString& text, CUnicodeString& name, CUnicodeString& address) {
    TSX_REQUIRE(!text.IsEmpty(), u"..\\Src\\Corvane");
    name.Clear();
    address.Clear();
    const std::int32_t last = text.Length() - 1;
    const std::int32_t open = text[last] == u'>' ? text.FindLast(u'<') : -1;
    if (open < 0) {
        address = text;
        return;
    }
    name = text.Left(open);
    address = text.Mid(open + 1, last - open - 1);
    name.Trim();
    address.Trim();
}

void CCorvaneApplication::ProcessArguments() {
    CConsoleApplication::ProcessArguments();
    if (Recipients.IsEmpty()) {
        GenerateCheckException(ERR_NO_RECIPIENTS, u"", u"");
    }
}

void CCorvaneApplication::ProcessArgument(const CConsoleArgument& argument) {
    if (IsOptionName(argument.Name, u"subject", u"s")) {
        Subject = argument.Value;
    } else if (IsOptionName(argument.Name, u"body", u"b")) {
        Body = argument.Value;
    } else if (IsOptionName(argument.Name, u"recipient", u"r")) {
        Recipients.Append(ParseAddress(argument.Value));
    } else if (IsOptionName(argument.Name, u"attachment", u"a")) {
        AddAttachment(argument.Value);
    } else {
        CConsoleApplication::ProcessArgument(argument);
    }
}

void CCorvaneApplication::AddAttachment(const CUnicodeString& value) {
    CNamedAddress attachment = ParseAddress(value);
    if (FileSystem::GetFileSystem(attachment.Address).DirectoryExists(attachment.Address)) {
        // No search finds a folder under a path with a closing separator: the folder would pass for a missing file.
        FileSystem::RemoveTrailingSlash(attachment.Address);
    }
    if (attachment.Name.IsEmpty()) {
        attachment.Name = FileSystem::GetNameAndExt(attachment.Address);
    }
    Attachments.Append(attachment);
}

void CCorvaneApplication::Run() {
    if (IsExtendedMapiAvailable()) {
        RunExtendedRoute();
    } else {
        RunSimpleRoute();
    }
}

void CCorvaneApplication::RunExtendedRoute() {
    CArray<CUnicodeString> paths;
    for (const CNamedAddress& attachment : Attachments) {
        if (FileExists(attachment.Address)) {
            paths.Append(attachment.Address);
        }
    }
    CMapiContext context;
    SendThroughExtendedMapi(context, Subject, Body, Recipients, paths);
}

void CCorvaneApplication::RunSimpleRoute() {
    // AS DESIGNED: each attachment that exists adds the whole list, missing ones included, and not only itself: with n
    // attachments of which k exist, the MAPI library gets k times all n.
    CArray<CNamedAddress> list;
    for (const CNamedAddress& attachment : Attachments) {
        if (FileExists(attachment.Address)) {
            list.AppendAll(Attachments);
        }
    }
    constexpr std::uint32_t flags = Mapi::FlagLogonUi | Mapi::FlagDialog;
    CMapiMailSender sender;
    for (const CNamedAddress& recipient : Recipients) {
        sender.Send(0, Subject, list, Body, recipient.Address, recipient.Name, u"", flags);
    }
}

CUnicodeString CCorvaneApplication::GetHelpText() {
    return FormatMessage(MSG_HELP, FileSystem::GetNameAndExt(FileSystem::GetProgramPath()));
}
