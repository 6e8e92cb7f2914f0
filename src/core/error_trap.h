#pragma once
// The common error trap: every public routine of the system runs under it.
// On failure a routine reports its module name ("modMapping") and its own
// name in colons (":GetPosn:") with the error to the program's error sink,
// then returns its failure value (false, 0, empty) instead of throwing.

#include <exception>
#include <stdexcept>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qarvel::core {

struct ErrorReport {
    std::string module;       // e.g. "modMinSep"
    std::string routine;      // e.g. ":LookupMinSep:" (colons included)
    std::string description;  // what went wrong
    // "modMinSep:LookupMinSep: subscript out of range"
    std::string Text() const { return module + routine + " " + description; }
};

// Where trapped errors go. The desktop program logs them, the command line
// prints them to stderr, tests record them.
class ErrorSink {
public:
    virtual ~ErrorSink() = default;
    virtual void Report(const ErrorReport& report) = 0;
};

// Writes each report as one line on stderr.
class StderrErrorSink : public ErrorSink {
public:
    void Report(const ErrorReport& report) override;
};

// Keeps every report; for tests and for callers that show errors later.
class RecordingErrorSink : public ErrorSink {
public:
    void Report(const ErrorReport& report) override;
    std::vector<ErrorReport> Reports() const;
    void Clear();

private:
    mutable std::mutex m_mutex;
    std::vector<ErrorReport> m_reports;
};

// Sends a report to the installed sink (stderr when none is installed).
// Safe to call from worker threads.
void ReportError(std::string_view module, std::string_view routine, std::string_view description);

// Installs a sink for the lifetime of this object, restoring the previous one.
class ScopedErrorSink {
public:
    explicit ScopedErrorSink(ErrorSink& sink);
    ~ScopedErrorSink();
    ScopedErrorSink(const ScopedErrorSink&) = delete;
    ScopedErrorSink& operator=(const ScopedErrorSink&) = delete;

private:
    ErrorSink* m_previous;
};

// Thrown by the halt handler installed in tests so that a program stop can
// be observed. The trap never swallows it.
struct ProgramHalted {
    int exitCode;
};

// The error raised inside a module for a condition the trap reports
// (a subscript out of range, a floating-point fault, a file error).
class TrapError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Runs body(); any exception is reported under module and routine and
// failValue is returned. ProgramHalted passes through.
template <class R, class Body>
R Trapped(std::string_view module, std::string_view routine, R failValue, Body&& body) {
    try {
        return body();
    } catch (const ProgramHalted&) {
        throw;
    } catch (const std::exception& e) {
        ReportError(module, routine, e.what());
    } catch (...) {
        ReportError(module, routine, "unknown error");
    }
    return failValue;
}

// As Trapped, for routines without a result: true when body() ran through.
template <class Body>
bool TrappedVoid(std::string_view module, std::string_view routine, Body&& body) {
    return Trapped(module, routine, false, [&] {
        body();
        return true;
    });
}

}  // namespace qarvel::core
