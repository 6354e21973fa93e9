// The one channel for text meant for a person: DisplayMessage and DisplayException, and the handler that receives it.
#pragma once

#include "foundation/inc/errors.h"
#include "platform/inc/types.h"

namespace Tsx {

/// Receives text for people. The style is the Windows message-box word, also for handlers that show no box; the result
/// is the button.
class CMessageHandler {
public:
    CMessageHandler() = default;
    /// Clears the default handler if it is this object.
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

/// Shows the system's message box.
class CMessageBoxHandler : public CMessageHandler {
public:
    std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                std::uint32_t style) override;
};

/// Installs a handler for the process over a block and puts the one before back; finding another one in its place then
/// is an internal error, which is swallowed.
class CMessageHandlerScope {
public:
    explicit CMessageHandlerScope(CMessageHandler* toInstall);
    ~CMessageHandlerScope();
    CMessageHandlerScope(const CMessageHandlerScope&) = delete;
    CMessageHandlerScope& operator=(const CMessageHandlerScope&) = delete;

private:
    CMessageHandler* handler;
    CMessageHandler* previous = nullptr;
};

/// Shows a text with the application's name as title, on any thread, one at a time.
std::int32_t DisplayMessage(const CUnicodeString& text, std::uint32_t style);
/// Shows an exception, which stays the caller's. A CUserException is silent.
void DisplayException(CException* exception);

CMessageHandler* GetCurrentMessageHandler();
CMessageHandler* GetDefaultMessageHandler();

/// The title of all boxes; "Tessarix" while none is stored.
void SetApplicationName(const CUnicodeString& name);
CUnicodeString GetStoredApplicationName();

/// The answer that a handler gives which cannot ask: the style's default button.
std::int32_t GetDefaultButton(std::uint32_t style);

} // namespace Tsx
