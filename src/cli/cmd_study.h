#pragma once
// Study commands, under the "job" group:
//   qarvel-cli job show JOB.fmj [--clearance KM] [--relations primary,1st,2nd,3rd,if]
//                      [--status LI,CP,AP,AD,VA,DE] [--tv6] [--am] [--channel N]
//                      [--class C] [--sort CAPTION] [--format text|csv|json]
//       the job grid: the stations the filter admits, by clearance
//   qarvel-cli job map JOB.fmj --out MAP.png|MAP.pdf [--scale N] [--fill]
//                      [--color clearance|channel] [--size WxH] [filter options]
//       the job's map drawn headless (only in builds with the renderer)

#include "cli/command_set.h"

namespace qarvel::cli {

// Adds "show" and "map" to the "job" group, which RegisterJobCommands must
// have made first.
void RegisterStudyCommands(CommandSet& commands);

}  // namespace qarvel::cli
