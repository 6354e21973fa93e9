// The base of console programs (CCorvaneApplication): it starts and stops the foundation around the run, parses the
// command line, knows the common options, prints logo, help and errors, and holds the exit code. It is the message
// handler of the run, so that texts go to the console.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/messagehandlers.h"

namespace Console {

extern Tsx::CMessageName ERR_TOOLS_CONSOLE_APPLICATION_INVALID_ARGUMENT;
extern Tsx::CMessageName ERR_TOOLS_CONSOLE_APPLICATION_INVALID_LANGUAGE_CODE;
extern Tsx::CMessageName MSG_TOOLS_CONSOLE_APPLICATION_COMMON_COMMAND_LINE_ARGUMENTS_HELP;
extern Tsx::CMessageName MSG_TOOLS_CONSOLE_APPLICATION_LOGO_TEMPLATE;

/// One token of the command line:
///
///   -a:b:c, /a:b:c    Name "a", Value "b:c"
///   -a, -a:           Name "a", Value ""
///   -:x               Name ":x", Value ""       the separator is looked for behind the first character of the name
///   x, -, /           Name "", Value the token  not an option
struct CConsoleArgument {
    Tsx::CUnicodeString Text;
    Tsx::CUnicodeString Name;
    Tsx::CUnicodeString Value;
};

/// Derive, override, put one on the stack, call Execute once. Main thread.
class CConsoleApplication : private Tsx::CMessageHandler {
public:
    CConsoleApplication() = default;
    ~CConsoleApplication() override = default;

    /// Runs the whole program and returns the exit code: 0 after a normal run, -1 after help or an error. Raises what
    /// OnException, Finalize, GetRegistryPath or the foundation's stop raises.
    std::int32_t Execute();

    /// Whether a name means an option, without regard to case. With an empty short form the name must be the full name;
    /// otherwise it may be any beginning of the full name that is not shorter than the short form, which must itself be
    /// a beginning of the full name.
    static bool IsOptionName(const Tsx::CUnicodeString& name, const char16_t* fullName, const char16_t* shortName);

protected:
    Tsx::CArray<CConsoleArgument> Arguments; // one for each token, the program's path first
    std::int32_t ExitCode = 0;
    bool ShowLogo = true; // the logo is still to be printed

    /// Prints the text and answers with the style's default button.
    std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override;

    virtual void Initialize() {}
    /// Hands each argument but the first to ProcessArgument.
    virtual void ProcessArguments();
    /// The common options NoLogo, UiLanguage, Help and ?; raises a check exception for anything else.
    virtual void ProcessArgument(const CConsoleArgument& argument);
    virtual void Run();
    /// Reports an exception that ended the run, and deletes it.
    virtual void OnException(Tsx::CException* exception);
    virtual void Finalize() {}
    /// "Software\Ostrel\", the internal name and the file version.
    virtual Tsx::CUnicodeString GetRegistryPath();
    virtual Tsx::CUnicodeString GetApplicationName();
    virtual Tsx::CUnicodeString GetLogoText();
    virtual Tsx::CUnicodeString GetHelpText() = 0;

    void ParseCommandLine();
    /// Prints logo and help and raises CUserException.
    [[noreturn]] void ShowHelp();

private:
    void RunGuarded();
    void PrintLogoOnce();
    void ChooseLanguage(const Tsx::CUnicodeString& value);
};

} // namespace Console
