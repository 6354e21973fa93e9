// Assertions: a broken assumption becomes an internal error that names a source module and a line. For every source
// that checks something.
#pragma once

#include <cstdint>

namespace Tsx {

/// Kinds of internal failure, the first argument of GenerateInternalError.
constexpr std::uint32_t InternalAssert = 0;
constexpr std::uint32_t InternalAssertLastError = 1;
constexpr std::uint32_t InternalPresume = 2;
constexpr std::uint32_t InternalPresumeLastError = 3;

/// Raises CInternalError, or shows the failure and returns false where this thread must not throw. `code` is a Windows
/// error code for the kinds that carry one and 0 otherwise. `file` must be a literal: the exception keeps the pointer.
bool GenerateInternalError(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                           const char16_t* file, std::uint32_t line, std::uint32_t code);

/// The failing end of an assertion; the second one adds the calling thread's last error to the report.
void FailAssertion(const char16_t* file, std::uint32_t line);
void FailAssertionWithLastError(const char16_t* file, std::uint32_t line);

} // namespace Tsx

/// TSX_ASSERT(count >= 0, u"src\\alloc") names the line of our source; TSX_ASSERT_AT takes a line where reports must
/// stay comparable from version to version. The expression is not part of the report. Evaluates the condition once, in
/// every build.
#define TSX_ASSERT_AT(condition, file, line)                                                                           \
    (__builtin_expect(static_cast<bool>(condition), 1) ? static_cast<void>(0) : ::Tsx::FailAssertion(file, line))
#define TSX_ASSERT(condition, file) TSX_ASSERT_AT(condition, file, __LINE__)

/// The same for a failed Windows call, whose error code goes into the report.
#define TSX_ASSERT_CALL(condition, file) TSX_ASSERT_CALL_AT(condition, file, __LINE__)
#define TSX_ASSERT_CALL_AT(condition, file, line)                                                                      \
    (__builtin_expect(static_cast<bool>(condition), 1) ? static_cast<void>(0)                                          \
                                                       : ::Tsx::FailAssertionWithLastError(file, line))

/// TSX_REQUIRE(data, ModuleName, nullptr): an assertion that leaves the function. On a thread that must not throw a
/// failed check is shown and comes back; the function then returns what follows the file (nothing where it returns
/// nothing), which must do no harm. For every check whose failure the code behind it could not bear.
#define TSX_REQUIRE_AT(condition, file, line, ...)                                                                     \
    do {                                                                                                               \
        if (__builtin_expect(!static_cast<bool>(condition), 0)) {                                                      \
            ::Tsx::FailAssertion(file, line);                                                                          \
            return __VA_ARGS__;                                                                                        \
        }                                                                                                              \
    } while (false)
#define TSX_REQUIRE(condition, file, ...) TSX_REQUIRE_AT(condition, file, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
