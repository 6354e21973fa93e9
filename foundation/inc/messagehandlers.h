// The one channel for text meant for a person: DisplayMessage and DisplayException, the handler that receives it, and
// the choice of the handler. Each family of handlers has a source of its own; the console application is one too.
#pragma once

#include "foundation/inc/errors.h"
#include "platform/inc/console.h"
#include "platform/inc/types.h"

namespace Tsx {

/// Receives text for people. The style is the Windows message-box word, also for handlers that show no box; the result
/// is the button. A handler tells of no failure of its own: what it cannot show is lost.
class CMessageHandler {
public:
    CMessageHandler() = default;
    /// Makes the default handler invalid if it is this object.
    virtual ~CMessageHandler();
    CMessageHandler(const CMessageHandler&) = delete;
    CMessageHandler& operator=(const CMessageHandler&) = delete;

    virtual std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                        std::uint32_t style) = 0;
    /// The same with a named icon, which the base ignores.
    virtual std::int32_t ShowMessageWithIcon(Platform::Window owner, const char16_t* text, const char16_t* title,
                                             std::uint32_t style, const char16_t* iconName);
    /// Lets the exception report itself; a failure inside that ends the process.
    virtual void ShowException(CException* exception);
};

/// Shows the system's message box. A box without an icon that neither warns nor asks to retry gets the exclamation
/// mark; one without a visible owner comes to the front and stays there.
class CMessageBoxHandler : public CMessageHandler {
public:
    std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override;
    /// The icon, if one is named, takes the place of the style's; no module having it is an internal error.
    std::int32_t ShowMessageWithIcon(Platform::Window owner, const char16_t* text, const char16_t* title,
                                     std::uint32_t style, const char16_t* iconName) override;
};

/// Writes a text to a console. False for a handle that is none, and when only a part of the text was taken.
bool WriteToConsole(Platform::Handle console, const CUnicodeString& text);

/// Writes texts to the standard output as lines, and answers with the default button:
///
///   a console                                   wide characters
///   a file that begins with FF FE, not at 0     UTF-16 as it lies in memory
///   any other file, a pipe, anything else       the ANSI code page
///
/// A text that the output does not take goes to standard error, and is lost if that takes none either.
class CConsoleMessageHandler : public CMessageHandler {
public:
    /// The handle stays the caller's.
    explicit CConsoleMessageHandler(
        Platform::Handle standardOutput = Platform::GetStdHandle(Platform::StdOutputHandle));

    std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override;

private:
    Platform::Handle output;
    std::uint32_t fileType;   // without the remote bit; 0 if there is no output
    bool asAnsi = true;       // meaningful once it is known
    bool asAnsiKnown = false; // under ConsoleHandlerLock, as asAnsi is

    void DecideEncoding();
    bool BeginsWithMark() const;
    bool WriteLine(const CUnicodeString& line) const;
};

/// Writes texts to the system's event log, and answers with the default button. The event source is registered at the
/// first text, under the application's name at that time; if the system refuses that, all texts are lost.
class CEventLogMessageHandler : public CMessageHandler {
public:
    /// `titleOfExceptions` stands for the application's name as the title of exceptions.
    explicit CEventLogMessageHandler(const CUnicodeString& titleOfExceptions = {}) : sourceName(titleOfExceptions) {}
    ~CEventLogMessageHandler() override;

    std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override;
    /// Writes an error; a CUserException is silent.
    void ShowException(CException* exception) override;

private:
    Platform::Handle source = nullptr; // null until the first text, invalid if refused; under EventLogHandlerLock
    CUnicodeString sourceName;

    void WriteEvent(const char16_t* text, const char16_t* title, std::uint16_t type);
    void RegisterSource();
};

/// Installs a handler over a block, for the process or for the calling thread alone, and puts the one before back.
/// Finding another one in its place then is an internal error, which is swallowed. On a thread without memory for its
/// own handler, where that can't be thrown, nothing is installed and nothing put back.
class CMessageHandlerScope {
public:
    explicit CMessageHandlerScope(CMessageHandler* toInstall, bool forThisThread = false);
    ~CMessageHandlerScope();
    CMessageHandlerScope(const CMessageHandlerScope&) = delete;
    CMessageHandlerScope& operator=(const CMessageHandlerScope&) = delete;

private:
    CMessageHandler* handler;
    CMessageHandler* previous = nullptr;
    bool active = false;
    bool perThread;
};

/// Logs a text and shows it with the application's name as title, on any thread, one at a time. The result is the
/// button.
std::int32_t DisplayMessage(const char16_t* text, std::uint32_t style);
inline std::int32_t DisplayMessage(const CUnicodeString& text, std::uint32_t style) {
    return DisplayMessage(text.Text(), style);
}
/// Logs an exception and shows it; it stays the caller's. A CUserException is not logged, and handlers are silent about
/// it.
void DisplayException(CException* exception);

/// The handler of the calling thread, of the process, or by default.
CMessageHandler* GetCurrentMessageHandler();
/// The handler where none is installed, chosen at the first call: by the name that "MessageHandler" gives in the
/// program's version record ("EVENTLOG", "MESSAGEBOX" or "CONSOLE" in any case), else the console if there is a
/// standard output, and a message box if not. InvalidMessageHandler() once the chosen one was destroyed, and as long
/// as there is none to choose, at the two ends of the process.
CMessageHandler* GetDefaultMessageHandler();

/// The mark in the place of a handler that was destroyed: all bits set, not to be called.
inline CMessageHandler* InvalidMessageHandler() {
    return reinterpret_cast<CMessageHandler*>(~std::uintptr_t{0}); // NOLINT(performance-no-int-to-ptr): a mark
}

/// The title of all boxes and the source in the event log; "Tessarix" while none is stored.
void SetApplicationName(const CUnicodeString& name);
CUnicodeString GetStoredApplicationName();

/// The answer that a handler gives which cannot ask: the style's default button.
std::int32_t GetDefaultButton(std::uint32_t style);
/// What a box of the system answered; the style's default button if there was no box to press one in.
inline std::int32_t PressedButton(std::int32_t answer, std::uint32_t style) {
    return answer != 0 ? answer : GetDefaultButton(style);
}
/// The event-log type of a text: by the style's icon, without one by its buttons.
std::uint16_t GetEventType(std::uint32_t style);

} // namespace Tsx
