#include "core/interrupt.h"

#include <csignal>

namespace qarvel::core {

namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set from a signal handler");

extern "C" void OnInterrupt(int signal) {
    if (g_interrupted.exchange(true)) {
        std::signal(signal, SIG_DFL);  // asked twice: stop now
        std::raise(signal);
    }
}

}  // namespace

const std::atomic<bool>* InterruptFlag() { return &g_interrupted; }

bool Interrupted() { return g_interrupted.load(); }

void InstallInterruptHandlers() {
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

}  // namespace qarvel::core
