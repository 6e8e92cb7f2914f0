#pragma once
// Stopping a long run on request. The command line installs handlers for
// SIGINT and SIGTERM that only set a flag; long work (imports, packing,
// job building, grid scans) polls it, stops at its next step, removes its
// temporary files through its usual clean-up and leaves earlier outputs as
// they were. A second signal ends the program at once.

#include <atomic>

namespace qarvel::core {

// The flag the handlers set; long work takes it as its cancel flag.
const std::atomic<bool>* InterruptFlag();
bool Interrupted();
// Installs the handlers (command line only; the desktop has its Cancel buttons).
void InstallInterruptHandlers();

}  // namespace qarvel::core
