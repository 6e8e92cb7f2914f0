#pragma once
// Streaming record reader for the importers' text files: the regulator's
// pipe-delimited dumps, comma-separated lists and fixed-width lines. The file
// is read through one fixed buffer, one record at a time, so memory does not
// grow with the file.
//
// A file that cannot be read as text (a NUL byte), a quoted field or a
// "|^|"-terminated record that the file ends in the middle of, or a record
// that runs on without its terminator, throws ImportFailure naming the file
// and line.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qarvel::importers {

// An input the import cannot use at all (a missing file or column, a cut-off
// or garbled file). The import stops and writes nothing.
class ImportFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct DelimitedFormat {
    // Field separator; '\0' keeps each line whole as a single field.
    char delimiter = '|';
    // Fields may be wrapped in double quotes; inside them the delimiter and
    // line breaks are text and "" is one quote.
    bool quotes = false;
    // Records end with "|^|" and a line break, as in the regulator's dumps; a
    // line break anywhere else belongs to the record's free text. The "^"
    // field is not returned.
    bool caretTerminated = false;
};

// Whether the file's first line ends with the "|^|" record terminator (the
// regulator's dumps); false for an empty file.
bool FirstLineEndsWithCaret(const std::filesystem::path& path);

class DelimitedReader {
public:
    // Opens path; throws ImportFailure when it cannot be read.
    DelimitedReader(const std::filesystem::path& path, DelimitedFormat format);

    // The next record's fields, raw bytes (not trimmed, not converted). A
    // line with nothing on it is skipped. False at the end of the file.
    bool Next(std::vector<std::string>& fields);

    // The line on which the record last returned began (1-based).
    std::uint64_t RecordLine() const { return m_recordLine; }
    // Whether that record was closed by a line break or terminator; the last
    // record of a cut-off file is not.
    bool RecordTerminated() const { return m_recordTerminated; }
    std::uint64_t BytesRead() const { return m_consumed; }
    std::uint64_t Size() const { return m_size; }
    // The file's name, for messages.
    std::string Name() const { return m_path.filename().string(); }

    // Records of a caret-terminated file may span at most this many lines.
    static constexpr int kMaxLinesPerRecord = 64;

private:
    bool Fill();
    int Peek();
    [[noreturn]] void Fail(const std::string& problem, std::uint64_t line) const;
    void EndField();
    bool EndOfCaretRecord() const;

    std::filesystem::path m_path;
    DelimitedFormat m_format;
    std::ifstream m_in;
    std::vector<char> m_buffer;
    std::size_t m_pos = 0, m_end = 0;
    std::uint64_t m_size = 0, m_consumed = 0;
    std::uint64_t m_line = 1, m_recordLine = 0;
    bool m_recordTerminated = true;

    std::vector<std::string>* m_fields = nullptr;
    std::string m_field;
};

}  // namespace qarvel::importers
