#include "stationdb/jet_dialect.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace qarvel::stationdb {
namespace {

// Jet compares text without regard to case. Folding ASCII and the Latin-1
// letters covers the code page the station data was written in.
char32_t Fold(char32_t c) {
    if (c >= U'A' && c <= U'Z') return c + 32;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
    return c;
}

bool IsContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes UTF-8 into code points, folding case. A byte that does not start a
// well-formed sequence stands for itself, so damaged text still compares.
void DecodeFolded(std::string_view s, std::u32string& out) {
    out.clear();
    std::size_t i = 0;
    const std::size_t n = s.size();
    while (i < n) {
        const auto b = static_cast<unsigned char>(s[i]);
        char32_t c = b;
        std::size_t len = 1;
        if (b >= 0xC0 && b < 0xE0 && i + 1 < n && IsContinuation(static_cast<unsigned char>(s[i + 1]))) {
            c = (char32_t(b & 0x1F) << 6) | (static_cast<unsigned char>(s[i + 1]) & 0x3F);
            len = 2;
        } else if (b >= 0xE0 && b < 0xF0 && i + 2 < n && IsContinuation(static_cast<unsigned char>(s[i + 1])) &&
                   IsContinuation(static_cast<unsigned char>(s[i + 2]))) {
            c = (char32_t(b & 0x0F) << 12) | (char32_t(static_cast<unsigned char>(s[i + 1]) & 0x3F) << 6) |
                (static_cast<unsigned char>(s[i + 2]) & 0x3F);
            len = 3;
        } else if (b >= 0xF0 && b < 0xF8 && i + 3 < n && IsContinuation(static_cast<unsigned char>(s[i + 1])) &&
                   IsContinuation(static_cast<unsigned char>(s[i + 2])) &&
                   IsContinuation(static_cast<unsigned char>(s[i + 3]))) {
            c = (char32_t(b & 0x07) << 18) | (char32_t(static_cast<unsigned char>(s[i + 1]) & 0x3F) << 12) |
                (char32_t(static_cast<unsigned char>(s[i + 2]) & 0x3F) << 6) |
                (static_cast<unsigned char>(s[i + 3]) & 0x3F);
            len = 4;
        }
        out.push_back(Fold(c));
        i += len;
    }
}

bool TokenMatches(const JetPattern::Token& t, char32_t c) {
    switch (t.kind) {
        case JetPattern::Kind::Literal: return c == t.literal;
        case JetPattern::Kind::AnyOne: return true;
        case JetPattern::Kind::Digit: return c >= U'0' && c <= U'9';
        case JetPattern::Kind::Set: {
            const bool in = std::any_of(t.ranges.begin(), t.ranges.end(),
                                        [c](const JetPattern::Range& r) { return c >= r.low && c <= r.high; });
            return in != t.negated;
        }
        case JetPattern::Kind::AnyRun: break;
    }
    return false;
}

JetPattern::Token MakeToken(JetPattern::Kind kind) {
    JetPattern::Token token;
    token.kind = kind;
    return token;
}

}  // namespace

std::optional<JetPattern> JetPattern::Compile(std::string_view pattern) {
    std::u32string p;
    DecodeFolded(pattern, p);
    JetPattern result;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const char32_t c = p[i];
        if (c == U'*') {
            if (result.m_tokens.empty() || result.m_tokens.back().kind != Kind::AnyRun)
                result.m_tokens.push_back(MakeToken(Kind::AnyRun));
        } else if (c == U'?') {
            result.m_tokens.push_back(MakeToken(Kind::AnyOne));
        } else if (c == U'#') {
            result.m_tokens.push_back(MakeToken(Kind::Digit));
        } else if (c == U'[') {
            const std::size_t close = p.find(U']', i + 1);
            if (close == std::u32string::npos) return std::nullopt;  // Jet: invalid pattern
            std::u32string list = p.substr(i + 1, close - i - 1);
            i = close;
            if (list.empty()) continue;  // "[]" matches the empty string
            Token set = MakeToken(Kind::Set);
            std::size_t j = 0;
            if (list[0] == U'!' && list.size() > 1) {
                set.negated = true;
                j = 1;
            }
            while (j < list.size()) {
                if (j + 2 < list.size() && list[j + 1] == U'-') {
                    if (list[j + 2] < list[j]) return std::nullopt;  // descending range
                    set.ranges.push_back({list[j], list[j + 2]});
                    j += 3;
                } else {
                    set.ranges.push_back({list[j], list[j]});
                    ++j;
                }
            }
            result.m_tokens.push_back(std::move(set));
        } else {
            Token lit = MakeToken(Kind::Literal);
            lit.literal = c;
            result.m_tokens.push_back(std::move(lit));
        }
    }
    return result;
}

// Every token but "*" takes exactly one character, so the classic
// backtrack-to-the-last-star walk is exact and linear in practice.
bool JetPattern::MatchesFolded(const std::u32string& text) const {
    const std::size_t m = m_tokens.size();
    std::size_t p = 0, s = 0, starP = m, starS = 0;
    while (s < text.size()) {
        if (p < m && m_tokens[p].kind == Kind::AnyRun) {
            starP = p++;
            starS = s;
        } else if (p < m && TokenMatches(m_tokens[p], text[s])) {
            ++p;
            ++s;
        } else if (starP != m) {
            p = starP + 1;
            s = ++starS;
        } else {
            return false;
        }
    }
    while (p < m && m_tokens[p].kind == Kind::AnyRun) ++p;
    return p == m;
}

bool JetPattern::Matches(std::string_view text) const {
    thread_local std::u32string folded;
    DecodeFolded(text, folded);
    return MatchesFolded(folded);
}

bool JetLike(std::string_view pattern, std::string_view text) {
    const auto compiled = JetPattern::Compile(pattern);
    return compiled && compiled->Matches(text);
}

namespace {

std::string_view ValueText(sqlite3_value* v) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
    return text ? std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(v))) : std::string_view();
}

// like(pattern, text): "text LIKE pattern" in Jet's meaning. The compiled
// pattern is kept as auxiliary data, so a constant pattern compiles once per
// statement rather than once per row.
void LikeFunction(sqlite3_context* ctx, int, sqlite3_value** argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
        sqlite3_result_null(ctx);
        return;
    }
    if (const auto* cached = static_cast<const JetPattern*>(sqlite3_get_auxdata(ctx, 0))) {
        sqlite3_result_int(ctx, cached->Matches(ValueText(argv[1])) ? 1 : 0);
        return;
    }
    auto compiled = JetPattern::Compile(ValueText(argv[0]));
    if (!compiled) {
        sqlite3_result_error(ctx, "Invalid pattern string", -1);
        return;
    }
    auto owned = std::make_unique<JetPattern>(std::move(*compiled));
    sqlite3_result_int(ctx, owned->Matches(ValueText(argv[1])) ? 1 : 0);
    sqlite3_set_auxdata(ctx, 0, owned.release(), [](void* p) { delete static_cast<JetPattern*>(p); });
}

bool IsNumeric(sqlite3_value* v) {
    const int t = sqlite3_value_type(v);
    return t == SQLITE_INTEGER || t == SQLITE_FLOAT;
}

// Text that reads wholly as a number ("12", " -3.5 "), as Jet converts it when
// comparing it with a number. from_chars, because the desktop program sets
// the user's locale and strtod would then want a decimal comma.
std::optional<double> TextAsNumber(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(' ') - first + 1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

int CompareNumbers(sqlite3_value* a, sqlite3_value* b) {
    if (sqlite3_value_type(a) == SQLITE_INTEGER && sqlite3_value_type(b) == SQLITE_INTEGER) {
        const auto x = sqlite3_value_int64(a), y = sqlite3_value_int64(b);
        return (x > y) - (x < y);
    }
    const double x = sqlite3_value_double(a), y = sqlite3_value_double(b);
    return (x > y) - (x < y);
}

int ClassRank(sqlite3_value* v) {
    switch (sqlite3_value_type(v)) {
        case SQLITE_INTEGER:
        case SQLITE_FLOAT: return 0;
        case SQLITE_TEXT: return 1;
        default: return 2;
    }
}

// Orders two non-null values: numbers by value, text without regard to case
// (as Jet sorts), a number against numeric text by value, otherwise SQLite's
// order of storage classes.
int CompareValues(sqlite3_value* a, sqlite3_value* b) {
    if (IsNumeric(a) && IsNumeric(b)) return CompareNumbers(a, b);
    const int ra = ClassRank(a), rb = ClassRank(b);
    if (ra == 1 && rb == 1) {
        std::u32string x, y;
        DecodeFolded(ValueText(a), x);
        DecodeFolded(ValueText(b), y);
        return x.compare(y) < 0 ? -1 : (x == y ? 0 : 1);
    }
    if ((ra == 0 && rb == 1) || (ra == 1 && rb == 0)) {
        const auto other = TextAsNumber(ValueText(ra == 1 ? a : b));
        if (other) {
            const double n = sqlite3_value_double(ra == 0 ? a : b);
            const int c = (n > *other) - (n < *other);
            return ra == 0 ? c : -c;
        }
    }
    if (ra != rb) return ra < rb ? -1 : 1;
    const int na = sqlite3_value_bytes(a), nb = sqlite3_value_bytes(b);
    const int c = std::memcmp(sqlite3_value_blob(a), sqlite3_value_blob(b), static_cast<std::size_t>(std::min(na, nb)));
    return c != 0 ? c : (na > nb) - (na < nb);
}

// jet_between(x, a, b): x lies between the smaller and the larger of a and b,
// bounds included; NULL when any of the three is NULL.
void BetweenFunction(sqlite3_context* ctx, int, sqlite3_value** argv) {
    for (int i = 0; i < 3; ++i) {
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) {
            sqlite3_result_null(ctx);
            return;
        }
    }
    sqlite3_value* low = argv[1];
    sqlite3_value* high = argv[2];
    if (CompareValues(low, high) > 0) std::swap(low, high);
    const bool inside = CompareValues(argv[0], low) >= 0 && CompareValues(argv[0], high) <= 0;
    sqlite3_result_int(ctx, inside ? 1 : 0);
}

}  // namespace

void InstallJetDialect(sqlite3* db) {
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function(db, "like", 2, flags, nullptr, LikeFunction, nullptr, nullptr) != SQLITE_OK ||
        sqlite3_create_function(db, "jet_between", 3, flags, nullptr, BetweenFunction, nullptr, nullptr) !=
            SQLITE_OK) {
        throw std::runtime_error(std::string("cannot install the Jet dialect: ") + sqlite3_errmsg(db));
    }
}

}  // namespace qarvel::stationdb
