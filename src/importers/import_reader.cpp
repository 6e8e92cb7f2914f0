#include "importers/import_reader.h"

#include "stationdb/field_text.h"

namespace qarvel::importers {
namespace {

constexpr std::size_t kBufferSize = 1 << 16;

}  // namespace

bool FirstLineEndsWithCaret(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string line;
    char c = 0;
    while (line.size() < kBufferSize * 16 && in.get(c) && c != '\n') line += c;
    const std::string_view text = stationdb::TrimView(line);
    return text.size() >= 3 && text.substr(text.size() - 3) == "|^|";
}

DelimitedReader::DelimitedReader(const std::filesystem::path& path, DelimitedFormat format)
    : m_path(path), m_format(format), m_buffer(kBufferSize) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) throw ImportFailure("cannot find file " + path.string());
    m_size = std::filesystem::file_size(path, ec);
    m_in.open(path, std::ios::binary);
    if (!m_in) throw ImportFailure("cannot open file " + path.string());
}

bool DelimitedReader::Fill() {
    if (m_pos < m_end) return true;
    if (!m_in) return false;
    m_in.read(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
    m_end = static_cast<std::size_t>(m_in.gcount());
    m_pos = 0;
    if (m_in.bad()) throw ImportFailure(Name() + ": read error");
    return m_end > 0;
}

int DelimitedReader::Peek() { return Fill() ? static_cast<unsigned char>(m_buffer[m_pos]) : -1; }

void DelimitedReader::Fail(const std::string& problem, std::uint64_t line) const {
    throw ImportFailure(Name() + ":" + std::to_string(line) + ": " + problem);
}

void DelimitedReader::EndField() {
    m_fields->push_back(std::move(m_field));
    m_field.clear();
}

bool DelimitedReader::EndOfCaretRecord() const {
    return !m_fields->empty() && m_fields->back() == "^" && stationdb::TrimView(m_field).empty();
}

bool DelimitedReader::Next(std::vector<std::string>& fields) {
    fields.clear();
    m_field.clear();
    m_fields = &fields;
    m_recordLine = m_line;
    bool any = false;         // the record has begun
    bool fieldStart = true;   // nothing read yet for the current field
    bool inQuotes = false;
    std::uint64_t quoteLine = 0;
    int linesInRecord = 0;
    const bool splits = m_format.delimiter != '\0';

    while (Fill()) {
        const char c = m_buffer[m_pos++];
        ++m_consumed;
        if (c == '\0') Fail("holds binary data (a NUL byte); not a text file", m_line);
        if (inQuotes) {
            if (c == '"') {
                if (Peek() == '"') {
                    ++m_pos;
                    ++m_consumed;
                    m_field += '"';
                } else {
                    inQuotes = false;
                }
            } else if (c == '\r' && Peek() == '\n') {
                // the line break inside quoted text is kept as "\n"
            } else {
                if (c == '\n') ++m_line;
                m_field += c;
            }
            continue;
        }
        if (c == '\r' && Peek() == '\n') continue;
        if (c == '\n') {
            ++m_line;
            if (!any) {  // an empty line
                m_recordLine = m_line;
                continue;
            }
            if (!m_format.caretTerminated) {
                EndField();
                m_recordTerminated = true;
                return true;
            }
            if (EndOfCaretRecord()) {
                fields.pop_back();  // the "^"
                m_recordTerminated = true;
                return true;
            }
            if (++linesInRecord >= kMaxLinesPerRecord)
                Fail("record runs on for " + std::to_string(kMaxLinesPerRecord) +
                         " lines without its |^| terminator",
                     m_recordLine);
            m_field += '\n';
            continue;
        }
        any = true;
        if (m_format.quotes && c == '"' && fieldStart) {
            inQuotes = true;
            quoteLine = m_line;
            fieldStart = false;
            continue;
        }
        if (splits && c == m_format.delimiter) {
            EndField();
            fieldStart = true;
            continue;
        }
        m_field += c;
        fieldStart = false;
    }

    if (inQuotes)
        Fail("the file ends inside a quoted field begun on line " + std::to_string(quoteLine) + " (cut off?)",
             m_recordLine);
    if (!any) return false;
    if (m_format.caretTerminated) {
        if (!EndOfCaretRecord()) Fail("the file ends in the middle of a record (no |^| terminator; cut off?)", m_recordLine);
        fields.pop_back();
        m_recordTerminated = true;
        return true;
    }
    EndField();
    m_recordTerminated = false;
    return true;
}

}  // namespace qarvel::importers
