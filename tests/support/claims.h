// Rows of conformance tables. What Windows answers is the expectation on every system; a row that Wine is known to
// answer otherwise says so.
#pragma once

#include <functional>
#include <string_view>

enum class Wine { AsWindows, Otherwise, Ends }; // Ends: the process would not outlive the question

/// Runs the checks of a row. One that Wine answers otherwise is asked there too, but cannot fail. On Windows and Wine
/// alike a line on standard output tells what became of such a row, for whoever runs the tests on a Windows that we
/// have not seen.
void Claim(Wine wine, std::string_view row, const std::function<void()>& checks);

/// Whether a check is to be made here that stands outside such a row.
bool Applies(Wine wine);
