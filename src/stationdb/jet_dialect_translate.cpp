#include "stationdb/jet_dialect.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>

// BETWEEN translation for the Jet dialect (jet_dialect.h). The text is cut
// into tokens (names, literals, operators; strings, quoted and bracketed
// names and comments kept whole), and the operands around each BETWEEN are
// found by walking the expression grammar: an operand is a run of terms
// (names, literals, calls, bracketed groups, CASE ... END) joined by
// arithmetic operators.

namespace qarvel::stationdb {
namespace {

enum class Tok { Space, Comment, String, Name, Word, Number, Param, LParen, RParen, Dot, Op, Other };

struct Token {
    Tok kind;
    std::size_t begin;
    std::size_t end;
};

bool IsWordStart(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordChar(char c) { return IsWordStart(c) || IsDigit(c) || c == '$'; }

std::size_t SkipQuoted(std::string_view s, std::size_t i, char close) {
    ++i;
    while (i < s.size()) {
        if (s[i] == close) {
            if (close != ']' && i + 1 < s.size() && s[i + 1] == close) {
                i += 2;  // doubled quote inside
                continue;
            }
            return i + 1;
        }
        ++i;
    }
    return s.size();
}

std::size_t SkipNumber(std::string_view s, std::size_t i) {
    if (s.substr(i, 2) == "0x" || s.substr(i, 2) == "0X") {
        i += 2;
        while (i < s.size() && std::isxdigit(static_cast<unsigned char>(s[i]))) ++i;
        return i;
    }
    while (i < s.size() && (IsDigit(s[i]) || s[i] == '.')) ++i;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
        if (j < s.size() && IsDigit(s[j])) {
            i = j;
            while (i < s.size() && IsDigit(s[i])) ++i;
        }
    }
    return i;
}

std::vector<Token> Tokenise(std::string_view s) {
    static constexpr std::string_view kTwoCharOps[] = {"||", "<=", ">=", "<>", "!=", "==", "<<", ">>"};
    std::vector<Token> out;
    std::size_t i = 0;
    while (i < s.size()) {
        const char c = s[i];
        const std::size_t start = i;
        Tok kind = Tok::Other;
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f') {
            while (i < s.size() && std::strchr(" \t\n\r\f", s[i]) && s[i] != '\0') ++i;
            kind = Tok::Space;
        } else if (s.substr(i, 2) == "--") {
            i = s.find('\n', i);
            i = i == std::string_view::npos ? s.size() : i;
            kind = Tok::Comment;
        } else if (s.substr(i, 2) == "/*") {
            i = s.find("*/", i + 2);
            i = i == std::string_view::npos ? s.size() : i + 2;
            kind = Tok::Comment;
        } else if (c == '\'') {
            i = SkipQuoted(s, i, '\'');
            kind = Tok::String;
        } else if (c == '"' || c == '`' || c == '[') {
            i = SkipQuoted(s, i, c == '[' ? ']' : c);
            kind = Tok::Name;
        } else if (IsDigit(c) || (c == '.' && i + 1 < s.size() && IsDigit(s[i + 1]))) {
            i = SkipNumber(s, i);
            kind = Tok::Number;
        } else if (IsWordStart(c)) {
            while (i < s.size() && IsWordChar(s[i])) ++i;
            kind = Tok::Word;
        } else if (c == '?' || c == ':' || c == '@' || c == '$') {
            ++i;
            while (i < s.size() && IsWordChar(s[i])) ++i;
            kind = Tok::Param;
        } else if (c == '(' || c == ')' || c == '.') {
            ++i;
            kind = c == '(' ? Tok::LParen : (c == ')' ? Tok::RParen : Tok::Dot);
        } else {
            const bool two = std::any_of(std::begin(kTwoCharOps), std::end(kTwoCharOps),
                                         [&](std::string_view op) { return s.substr(i, 2) == op; });
            i += two ? 2 : 1;
            kind = std::strchr("+-*/%=<>&|~!", c) ? Tok::Op : Tok::Other;
        }
        out.push_back({kind, start, i});
    }
    return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

// Words that end an operand: clause and operator keywords.
bool IsKeyword(std::string_view w) {
    static constexpr std::string_view kWords[] = {
        "AND",    "OR",     "NOT",   "WHERE", "ON",     "WHEN",    "THEN",   "ELSE",  "END",   "HAVING",
        "SELECT", "DISTINCT", "ALL", "BY",    "IS",     "IN",      "LIKE",   "GLOB",  "REGEXP", "MATCH",
        "BETWEEN", "CASE",  "AS",    "FROM",  "JOIN",   "SET",     "VALUES", "EXISTS", "ESCAPE", "COLLATE",
        "ORDER",  "GROUP",  "LIMIT", "OFFSET", "UNION", "INTERSECT", "EXCEPT", "INTO", "UPDATE", "DELETE",
        "INSERT", "WITH",   "ASC",   "DESC",  "LEFT",   "INNER",   "OUTER",  "CROSS", "USING", "TOP"};
    return std::any_of(std::begin(kWords), std::end(kWords), [&](std::string_view k) { return EqualsNoCase(w, k); });
}

// Text that reads wholly as a number; from_chars, since strtod would follow
// the user's locale, which the desktop program sets.
std::optional<double> ParseDecimal(std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

class BetweenRewriter {
public:
    explicit BetweenRewriter(std::string_view text) : m_text(text) {
        for (const Token& t : Tokenise(text))
            if (t.kind != Tok::Space && t.kind != Tok::Comment) m_sig.push_back(t);
    }

    // Rewrites the n-th BETWEEN (0-based). Returns false when there is none;
    // otherwise sets keptBetween when the BETWEEN word stays in the output.
    bool RewriteNth(int n, std::string& out, bool& keptBetween) const {
        int seen = -1;
        for (std::size_t b = 0; b < m_sig.size(); ++b) {
            if (!IsWord(b, "BETWEEN") || ++seen != n) continue;
            keptBetween = true;
            out = std::string(m_text);
            Rewrite(b, out, keptBetween);
            return true;
        }
        return false;
    }

private:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    std::string_view Text(std::size_t i) const { return m_text.substr(m_sig[i].begin, m_sig[i].end - m_sig[i].begin); }
    std::string_view Span(std::size_t first, std::size_t last) const {
        return m_text.substr(m_sig[first].begin, m_sig[last].end - m_sig[first].begin);
    }
    bool Is(std::size_t i, Tok k) const { return i < m_sig.size() && m_sig[i].kind == k; }
    bool IsWord(std::size_t i, std::string_view w) const { return Is(i, Tok::Word) && EqualsNoCase(Text(i), w); }
    bool IsArithmetic(std::size_t i) const {
        if (!Is(i, Tok::Op)) return false;
        const std::string_view op = Text(i);
        return op == "+" || op == "-" || op == "*" || op == "/" || op == "%" || op == "||" || op == "&" ||
               op == "|" || op == "<<" || op == ">>";
    }
    bool IsUnary(std::size_t i) const { return Is(i, Tok::Op) && (Text(i) == "+" || Text(i) == "-" || Text(i) == "~"); }
    bool EndsTerm(std::size_t i) const {
        return Is(i, Tok::RParen) || Is(i, Tok::Name) || Is(i, Tok::String) || Is(i, Tok::Number) ||
               Is(i, Tok::Param) || (Is(i, Tok::Word) && (!IsKeyword(Text(i)) || IsWord(i, "END")));
    }

    std::size_t MatchForward(std::size_t i, Tok open, Tok close) const {
        int depth = 0;
        for (; i < m_sig.size(); ++i) {
            if (m_sig[i].kind == open) ++depth;
            if (m_sig[i].kind == close && --depth == 0) return i;
        }
        return npos;
    }
    std::size_t MatchCaseForward(std::size_t i) const {
        int depth = 0;
        for (; i < m_sig.size(); ++i) {
            if (IsWord(i, "CASE")) ++depth;
            if (IsWord(i, "END") && --depth == 0) return i;
        }
        return npos;
    }

    // One term starting at i; index after it, or npos.
    std::size_t TermForward(std::size_t i) const {
        if (Is(i, Tok::LParen)) {
            const std::size_t close = MatchForward(i, Tok::LParen, Tok::RParen);
            return close == npos ? npos : close + 1;
        }
        if (IsWord(i, "CASE")) {
            const std::size_t end = MatchCaseForward(i);
            return end == npos ? npos : end + 1;
        }
        if (Is(i, Tok::String) || Is(i, Tok::Number) || Is(i, Tok::Param)) return i + 1;
        if (!(Is(i, Tok::Name) || (Is(i, Tok::Word) && !IsKeyword(Text(i))))) return npos;
        if (Is(i + 1, Tok::LParen)) {
            const std::size_t close = MatchForward(i + 1, Tok::LParen, Tok::RParen);
            return close == npos ? npos : close + 1;
        }
        ++i;
        while (Is(i, Tok::Dot) && (Is(i + 1, Tok::Name) || Is(i + 1, Tok::Word))) i += 2;
        return i;
    }
    std::size_t ExprForward(std::size_t i) const {
        while (IsUnary(i)) ++i;
        i = TermForward(i);
        while (i != npos && IsArithmetic(i)) {
            ++i;
            while (IsUnary(i)) ++i;
            i = TermForward(i);
        }
        return i;
    }

    // The first index of the term ending at i, or npos.
    std::size_t TermBack(std::size_t i) const {
        if (Is(i, Tok::RParen)) {
            int depth = 0;
            for (std::size_t j = i + 1; j-- > 0;) {
                if (m_sig[j].kind == Tok::RParen) ++depth;
                if (m_sig[j].kind == Tok::LParen && --depth == 0)
                    return (j > 0 && Is(j - 1, Tok::Word) && !IsKeyword(Text(j - 1))) ? j - 1 : j;
            }
            return npos;
        }
        if (IsWord(i, "END")) {
            int depth = 0;
            for (std::size_t j = i + 1; j-- > 0;) {
                if (IsWord(j, "END")) ++depth;
                if (IsWord(j, "CASE") && --depth == 0) return j;
            }
            return npos;
        }
        if (Is(i, Tok::String) || Is(i, Tok::Number) || Is(i, Tok::Param)) return i;
        if (!(Is(i, Tok::Name) || (Is(i, Tok::Word) && !IsKeyword(Text(i))))) return npos;
        while (i >= 2 && Is(i - 1, Tok::Dot) && (Is(i - 2, Tok::Name) || Is(i - 2, Tok::Word))) i -= 2;
        return i;
    }
    std::size_t ExprBack(std::size_t i) const {
        for (;;) {
            const std::size_t start = TermBack(i);
            if (start == npos || start == 0 || !IsArithmetic(start - 1)) return start;
            if (start >= 2 && EndsTerm(start - 2)) {
                i = start - 2;  // binary operator: the operand goes on
                continue;
            }
            return IsUnary(start - 1) ? start - 1 : start;
        }
    }

    // The value of a bound written as a (signed) number literal, else nullopt.
    static std::optional<double> NumericLiteral(std::string_view operand) {
        std::string t(operand);
        t.erase(std::remove_if(t.begin(), t.end(), [](char c) { return std::isspace(static_cast<unsigned char>(c)); }),
                t.end());
        double sign = 1;
        std::size_t i = 0;
        while (i < t.size() && (t[i] == '+' || t[i] == '-')) sign = t[i++] == '-' ? -sign : sign;
        std::string_view digits = std::string_view(t).substr(i);
        if (digits.empty() || !(IsDigit(digits.front()) || digits.front() == '.')) return std::nullopt;
        if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
            std::uint64_t hex = 0;
            const auto [end, ec] = std::from_chars(digits.data() + 2, digits.data() + digits.size(), hex, 16);
            if (ec != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
            return sign * static_cast<double>(hex);
        }
        const auto value = ParseDecimal(digits);
        if (!value) return std::nullopt;
        return sign * *value;
    }

    void Rewrite(std::size_t b, std::string& out, bool& keptBetween) const {
        if (b == 0) return;
        const bool negated = IsWord(b - 1, "NOT");
        const std::size_t xEnd = negated ? b - 2 : b - 1;
        if (negated && b < 2) return;
        const std::size_t xStart = ExprBack(xEnd);
        const std::size_t aEnd = ExprForward(b + 1);
        if (xStart == npos || aEnd == npos || aEnd == b + 1 || !IsWord(aEnd, "AND")) return;
        const std::size_t bEnd = ExprForward(aEnd + 1);
        if (bEnd == npos || bEnd == aEnd + 1) return;

        const std::string_view x = Span(xStart, xEnd), low = Span(b + 1, aEnd - 1), high = Span(aEnd + 1, bEnd - 1);
        const auto lowValue = NumericLiteral(low), highValue = NumericLiteral(high);
        std::string replacement;
        std::size_t first = xStart;
        if (lowValue && highValue) {
            // Constant bounds: order them and keep SQLite's own BETWEEN.
            if (*lowValue <= *highValue) return;
            first = b + 1;
            replacement = std::string(high) + " AND " + std::string(low);
        } else {
            keptBetween = false;
            replacement = std::string(negated ? "NOT " : "") + "jet_between(" + std::string(x) + ", " +
                          std::string(low) + ", " + std::string(high) + ")";
        }
        const std::size_t from = m_sig[first].begin;
        out.replace(from, m_sig[bEnd - 1].end - from, replacement);
    }

    std::string_view m_text;
    std::vector<Token> m_sig;  // tokens without blanks and comments
};

bool MentionsBetween(std::string_view text) {
    static constexpr std::string_view kWord = "between";
    return std::search(text.begin(), text.end(), kWord.begin(), kWord.end(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == b;
           }) != text.end();
}

}  // namespace

std::string TranslateJetSql(std::string_view jetSql) {
    std::string text(jetSql);
    if (!MentionsBetween(text)) return text;
    // Leftmost first; a BETWEEN that stays (ordered constant bounds, or one
    // left as written) is counted and passed over on the next round.
    int kept = 0;
    for (;;) {
        std::string next;
        bool keptBetween = false;
        if (!BetweenRewriter(text).RewriteNth(kept, next, keptBetween)) return text;
        if (keptBetween) ++kept;
        text = std::move(next);
    }
}

}  // namespace qarvel::stationdb
