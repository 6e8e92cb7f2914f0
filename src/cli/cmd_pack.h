#pragma once
// Commands for packed containers and database checks:
//   qarvel-cli pack OUT FILE...      packs files into a container (".fmj", ".fmd")
//   qarvel-cli unpack FILE DIR       unpacks a container into a folder
//   qarvel-cli db check FILE [--json] validates a job (".fmj") or master (".fmd")

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterPackCommands(CommandSet& commands);

}  // namespace qarvel::cli
