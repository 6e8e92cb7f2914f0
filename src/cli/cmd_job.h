#pragma once
// Job commands:
//   qarvel-cli job new --db MASTER.fmd [--local LocalData.fmd] [--maps DIR]
//                      --lat LAT --lon LON --channel CH --class CLASS
//                      [--intl-class X] --range KM [--comments TEXT]
//                      --out JOB.fmj [--force]
//       builds a job round a target and packs it into JOB.fmj
//   qarvel-cli job info JOB.fmj [--json]
//       the job's header and the row count of each table

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterJobCommands(CommandSet& commands);

}  // namespace qarvel::cli
