#pragma once
// The Jet SQL dialect on SQLite. The station databases were Jet databases and
// the program's query texts are Jet SQL; two differences matter to them:
//  - LIKE uses Jet wildcards and ignores case: "*" any run of characters,
//    "?" one character, "#" one digit, "[list]" one character of the list,
//    "[!list]" one character not in it, ranges "[a-z]". SQLite's like() is
//    replaced on every connection (the two-argument form; LIKE ... ESCAPE
//    keeps SQLite's meaning).
//  - "X BETWEEN a AND b" selects X between the two bounds in either order
//    (the job-building box query gives the larger latitude first). SQLite's
//    BETWEEN wants the smaller bound first, so TranslateJetSql rewrites it.
// Bracketed names such as [Twr Reg #] are native to SQLite.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace qarvel::stationdb {

// A compiled Jet LIKE pattern. Characters are Unicode code points read from
// UTF-8; case is ignored for ASCII and Latin-1 letters.
class JetPattern {
public:
    // nullopt when the pattern is invalid (an unclosed "[").
    static std::optional<JetPattern> Compile(std::string_view pattern);
    bool Matches(std::string_view text) const;

    struct Range {
        char32_t low;
        char32_t high;
    };
    enum class Kind { Literal, AnyOne, Digit, AnyRun, Set };
    struct Token {
        Kind kind = Kind::Literal;
        char32_t literal = 0;        // Literal, already case-folded
        bool negated = false;        // Set: "[!...]"
        std::vector<Range> ranges;   // Set, case-folded
    };

private:
    bool MatchesFolded(const std::u32string& text) const;
    std::vector<Token> m_tokens;
};

// True when text matches the Jet pattern; false also for an invalid pattern.
bool JetLike(std::string_view pattern, std::string_view text);

// Rewrites every "X BETWEEN a AND b" (and "X NOT BETWEEN a AND b") of a Jet
// SQL text so that SQLite selects between the bounds in either order:
//  - when both bounds are numeric literals, they are put in ascending order
//    ("lat BETWEEN 500000 AND 600000"), which SQLite can serve from an index;
//  - otherwise the test becomes jet_between(X, a, b), a function installed by
//    InstallJetDialect.
// String literals, quoted and bracketed names and comments are left alone. A
// BETWEEN whose operands cannot be made out is left as written.
std::string TranslateJetSql(std::string_view jetSql);

// Installs like() and jet_between() on a connection. Throws std::runtime_error
// when SQLite refuses.
void InstallJetDialect(sqlite3* db);

}  // namespace qarvel::stationdb
