#pragma once
// Commands that import the regulator's station data into a new master
// database:
//   qarvel-cli import cdbs DIR --out master.fmd      CDBS dump folder
//   qarvel-cli import lms DIR --out master.fmd       LMS dump folder
//   qarvel-cli import fmquery FILE --out master.fmd  "FM Query" text output
//   qarvel-cli import csv FILE --out master.fmd [--east-positive]
// An --out ending in ".fdb" is written unpacked. Unreadable records are
// listed on stderr with file and line, a summary on stdout. Exit status 0
// when the database was written, 1 when the import failed (nothing is
// written), 2 for bad arguments.

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterImportCommands(CommandSet& commands);

}  // namespace qarvel::cli
