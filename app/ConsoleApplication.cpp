#include "app/ConsoleApplication.h"

#include "app/ConsoleTools.h"
#include "foundation/inc/commandlinefo.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/programidentity.h"
#include "foundation/inc/resourceinfo.h"
#include "platform/inc/process.h"
#include "platform/inc/text.h"
#include <memory>

using namespace Tsx;

namespace Console {

CMessageName ERR_TOOLS_CONSOLE_APPLICATION_INVALID_ARGUMENT(u"ERR_TOOLS_CONSOLE_APPLICATION_INVALID_ARGUMENT");
CMessageName
    ERR_TOOLS_CONSOLE_APPLICATION_INVALID_LANGUAGE_CODE(u"ERR_TOOLS_CONSOLE_APPLICATION_INVALID_LANGUAGE_CODE");
CMessageName MSG_TOOLS_CONSOLE_APPLICATION_COMMON_COMMAND_LINE_ARGUMENTS_HELP(
    u"MSG_TOOLS_CONSOLE_APPLICATION_COMMON_COMMAND_LINE_ARGUMENTS_HELP");
CMessageName MSG_TOOLS_CONSOLE_APPLICATION_LOGO_TEMPLATE(u"MSG_TOOLS_CONSOLE_APPLICATION_LOGO_TEMPLATE");

namespace {

constexpr const char16_t* ModuleName = u"..\\Src\\ConsoleApplication";
constexpr const char16_t* OutputFormat = u"\n%s\n\n";

bool IsOption(const CUnicodeString& token) {
    return token.Length() >= 2 && (token[0] == u'/' || token[0] == u'-');
}

CConsoleArgument ParseToken(const CUnicodeString& token) {
    if (!IsOption(token)) {
        return {token, {}, token};
    }
    constexpr std::int32_t firstSeparator = 2; // a name has at least one character
    const std::int32_t separator = token.Find(u':', firstSeparator);
    if (separator < 0) {
        return {token, token.Mid(1), {}};
    }
    return {token, token.Mid(1, separator - 1), token.Mid(separator + 1)};
}

} // namespace

std::int32_t CConsoleApplication::Execute() {
    const CUnicodeString registryPath = GetRegistryPath();
    if (!InitializeFoundation(registryPath.Text(), registryPath.Text())) {
        return ExitCode; // the foundation has reported why
    }
    const CMessageHandlerScope scope(this);
    try {
        RunGuarded();
    } catch (CException* exception) {
        OnException(exception);
    }
    Finalize();
    DeinitializeFoundation();
    return ExitCode;
}

void CConsoleApplication::RunGuarded() {
    SetApplicationName(GetApplicationName());
    Initialize();
    ParseCommandLine();
    ProcessArguments();
    Run();
}

void CConsoleApplication::ParseCommandLine() {
    CArray<CUnicodeString> tokens;
    SplitCommandLine(tokens, Platform::GetCommandLine());
    for (const CUnicodeString& token : tokens) {
        Arguments.Append(ParseToken(token));
    }
}

bool CConsoleApplication::IsOptionName(const CUnicodeString& name, const char16_t* fullName,
                                       const char16_t* shortName) {
    const CUnicodeString full(fullName);
    const CUnicodeString shortest(shortName);
    if (shortest.IsEmpty()) {
        TSX_ASSERT(!full.IsEmpty(), ModuleName);
        return name.CompareNoCase(fullName) == 0;
    }
    TSX_ASSERT(full.Length() >= shortest.Length(), ModuleName);
    TSX_ASSERT(full.Left(shortest.Length()) == shortest, ModuleName);
    if (name.Length() < shortest.Length() || name.Length() > full.Length()) {
        return false;
    }
    return name.CompareNoCase(full.Left(name.Length()).Text()) == 0;
}

void CConsoleApplication::ProcessArguments() {
    for (std::int32_t i = 1; i < Arguments.Size(); ++i) {
        ProcessArgument(Arguments[i]);
    }
}

void CConsoleApplication::ProcessArgument(const CConsoleArgument& argument) {
    if (IsOptionName(argument.Name, u"NoLogo", u"")) {
        ShowLogo = false;
    } else if (IsOptionName(argument.Name, u"UiLanguage", u"")) {
        ChooseLanguage(argument.Value);
    } else if (IsOptionName(argument.Name, u"Help", u"") || IsOptionName(argument.Name, u"?", u"")) {
        ShowHelp();
    } else {
        GenerateCheckException(ERR_TOOLS_CONSOLE_APPLICATION_INVALID_ARGUMENT, argument.Text.Text(), u"");
    }
}

void CConsoleApplication::ChooseLanguage(const CUnicodeString& value) {
    std::int32_t number = 0;
    CResourceBase& resources = GetResourceBase();
    if (!value.ToInt(number) || resources.FindLanguage(static_cast<std::uint32_t>(number)) == NoLanguage) {
        GenerateCheckException(ERR_TOOLS_CONSOLE_APPLICATION_INVALID_LANGUAGE_CODE, value.Text(), u"");
    }
    resources.SetCurrentLanguage(static_cast<std::uint32_t>(number));
}

void CConsoleApplication::Run() {
    PrintLogoOnce();
}

void CConsoleApplication::PrintLogoOnce() {
    if (ShowLogo) {
        ShowLogo = false;
        ConsolePrintf(OutputFormat, GetLogoText());
    }
}

void CConsoleApplication::ShowHelp() {
    PrintLogoOnce();
    ConsolePrintf(OutputFormat, GetHelpText());
    GenerateUserException();
}

void CConsoleApplication::OnException(CException* exception) {
    TSX_ASSERT(exception, ModuleName);
    const std::unique_ptr<CException> owner(exception);
    ExitCode = -1;
    if (dynamic_cast<CUserException*>(exception)) {
        return; // the user knows already
    }
    PrintLogoOnce();
    ConsolePrintf(OutputFormat, exception->GetMessageText());
}

std::int32_t CConsoleApplication::ShowMessageBox(Platform::Window, const char16_t* text, const char16_t*,
                                                 std::uint32_t style) {
    ConsolePrintf(u"%s", text);
    return GetDefaultButton(style);
}

CUnicodeString CConsoleApplication::GetApplicationName() {
    return GetProgramIdentity().Name;
}

CUnicodeString CConsoleApplication::GetRegistryPath() {
    // Settings stay where they are, whatever name a derived class shows.
    return GetProgramIdentity().RegistryPath;
}

CUnicodeString CConsoleApplication::GetLogoText() {
    const CProgramIdentity& program = GetProgramIdentity();
    if (!program.HasLogo) {
        return {};
    }
    return FormatMessage(MSG_TOOLS_CONSOLE_APPLICATION_LOGO_TEMPLATE, program.Logo[0], program.Logo[1], program.Logo[2],
                         program.Logo[3]);
}

} // namespace Console
