#pragma once
// Text safe to hand to other programs: CSV cells that a spreadsheet reads
// back as the same text (never as a formula), and text from data files made
// harmless for a terminal.

#include <string>
#include <string_view>
#include <vector>

namespace qarvel::core {

// One CSV cell: quoted when it holds a comma, quote or line break. A cell a
// spreadsheet would run as a formula (starting with "=", "+", "@", a tab or a
// carriage return, or "-" when it is not a number such as "-0.05") gets a
// leading apostrophe, which spreadsheets show as text.
std::string CsvField(std::string_view text);
// Cells joined by commas, without the line end.
std::string CsvRow(const std::vector<std::string>& cells);

// The text with control characters (C0 except tab, DEL, and the escape
// introducer of C1) replaced by "?", so that bytes from a data file cannot
// move the cursor or change a terminal's state.
std::string TerminalText(std::string_view text);

}  // namespace qarvel::core
