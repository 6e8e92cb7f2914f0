// CSV cells and terminal text that another program reads back as plain text.

#include "core/csv_text.h"

#include <gtest/gtest.h>

namespace qarvel::core {
namespace {

struct TextCase {
    const char* name;
    std::string in;
    std::string out;
};
void PrintTo(const TextCase& c, std::ostream* os) { *os << c.name; }
std::string CaseName(const ::testing::TestParamInfo<TextCase>& info) { return info.param.name; }

class CsvFieldTest : public ::testing::TestWithParam<TextCase> {};
TEST_P(CsvFieldTest, QuotesAndNeutralises) { EXPECT_EQ(CsvField(GetParam().in), GetParam().out); }
INSTANTIATE_TEST_SUITE_P(
    Table, CsvFieldTest,
    ::testing::Values(TextCase{"Plain", "KCOA", "KCOA"}, TextCase{"Empty", "", ""},
                      TextCase{"Comma", "Omaha, NE", "\"Omaha, NE\""},
                      TextCase{"Quote", "6\" mast", "\"6\"\" mast\""}, TextCase{"LineBreak", "a\nb", "\"a\nb\""},
                      TextCase{"Formula", "=HYPERLINK(\"x\")", "\"'=HYPERLINK(\"\"x\"\")\""},
                      TextCase{"Plus", "+1+2", "'+1+2"}, TextCase{"At", "@SUM(A1)", "'@SUM(A1)"},
                      TextCase{"Tab", "\tx", "'\tx"}, TextCase{"CarriageReturn", "\rx", "\"'\rx\""},
                      TextCase{"NegativeNumberKept", "-0.05", "-0.05"},
                      TextCase{"MinusTextNeutralised", "-cmd", "'-cmd"}),
    CaseName);

TEST(CsvRow, JoinsSafeCells) { EXPECT_EQ(CsvRow({"a", "b,c", "=1"}), "a,\"b,c\",'=1"); }

class TerminalTextTest : public ::testing::TestWithParam<TextCase> {};
TEST_P(TerminalTextTest, ReplacesControlBytes) { EXPECT_EQ(TerminalText(GetParam().in), GetParam().out); }
INSTANTIATE_TEST_SUITE_P(
    Table, TerminalTextTest,
    ::testing::Values(TextCase{"Plain", "WQXR-FM", "WQXR-FM"}, TextCase{"TabKept", "a\tb", "a\tb"},
                      TextCase{"Escape", "\x1b[2Jx", "?[2Jx"}, TextCase{"Delete", "a\x7f", "a?"},
                      TextCase{"C1Introducer", "a\xc2\x9b" "2J", "a?2J"},
                      TextCase{"Utf8Kept", "Ni\xc3\xb1o", "Ni\xc3\xb1o"}, TextCase{"NewLine", "a\nb", "a?b"}),
    CaseName);

}  // namespace
}  // namespace qarvel::core
