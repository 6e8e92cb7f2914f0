#pragma once
// AutoScan from the command line:
//   qarvel-cli autoscan --db MASTER.fmd --lat LAT --lon LON --class A ...
//       the open-channel list of one location (text, csv or json)
//   qarvel-cli autoscan-grid --db MASTER.fmd --class A --box LAT1 LON1 LAT2 LON2
//       --step KM --out NAME [--maps DIR]
//       AutoScan at every grid point on all cores: NAME.csv and a heat map NAME.png

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterAutoScanCommands(CommandSet& commands);

}  // namespace qarvel::cli
