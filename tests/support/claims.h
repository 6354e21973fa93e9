// Rows of conformance tables. What Windows answers is the expectation on every system; a row that Wine is known to
// answer otherwise says so.
#pragma once

#include <functional>
#include <string_view>

enum class Wine { AsWindows, Otherwise, Ends }; // Ends: the process would not outlive the question

/// Runs the checks of a row, under Wine only if that answers as Windows does. A failure names the row, and says of one
/// that no system has borne out here that it was claimed.
void Claim(Wine wine, std::string_view row, const std::function<void()>& checks);

/// Whether a check is to be made here that stands outside such a row.
bool Applies(Wine wine);
