// An action at the end of a scope, whichever way the scope is left. For what has no owner class of its own.
#pragma once

#include <utility>

namespace Tsx {

/// Calls `action` at its end, once. The action may not raise: it runs while exceptions pass.
///
///   const CScopeExit close([&] { Platform::CloseHandle(handle); });
template <class TAction>
class [[nodiscard]] CScopeExit {
public:
    explicit CScopeExit(TAction toCall) : action(std::move(toCall)) {}
    ~CScopeExit() { action(); }
    CScopeExit(const CScopeExit&) = delete;
    CScopeExit& operator=(const CScopeExit&) = delete;

private:
    TAction action;
};

} // namespace Tsx
