#include "core/error_trap.h"

#include <cstdio>

namespace qarvel::core {
namespace {

std::mutex g_sinkMutex;
ErrorSink* g_sink = nullptr;

ErrorSink& DefaultSink() {
    static StderrErrorSink sink;
    return sink;
}

}  // namespace

void StderrErrorSink::Report(const ErrorReport& report) {
    std::fprintf(stderr, "%s\n", report.Text().c_str());
}

void RecordingErrorSink::Report(const ErrorReport& report) {
    std::lock_guard lock(m_mutex);
    m_reports.push_back(report);
}

std::vector<ErrorReport> RecordingErrorSink::Reports() const {
    std::lock_guard lock(m_mutex);
    return m_reports;
}

void RecordingErrorSink::Clear() {
    std::lock_guard lock(m_mutex);
    m_reports.clear();
}

void ReportError(std::string_view module, std::string_view routine, std::string_view description) {
    std::lock_guard lock(g_sinkMutex);
    ErrorSink& sink = g_sink ? *g_sink : DefaultSink();
    sink.Report({std::string(module), std::string(routine), std::string(description)});
}

ScopedErrorSink::ScopedErrorSink(ErrorSink& sink) {
    std::lock_guard lock(g_sinkMutex);
    m_previous = g_sink;
    g_sink = &sink;
}

ScopedErrorSink::~ScopedErrorSink() {
    std::lock_guard lock(g_sinkMutex);
    g_sink = m_previous;
}

}  // namespace qarvel::core
