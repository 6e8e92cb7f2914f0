#pragma once
// The command line's editing of the user's data:
//   qarvel-cli marker add --db LOCAL.fmd --lat LAT --lon LON --label TEXT
//   qarvel-cli marker list --db LOCAL.fmd [--format text|csv|json]
//   qarvel-cli marker delete --db LOCAL.fmd ID
//   qarvel-cli station get --db DB APPLICATION_ID [--format text|json]
//   qarvel-cli station set --db DB APPLICATION_ID column=value ...

#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterMarkerCommands(CommandSet& commands);
void RegisterStationCommands(CommandSet& commands);

}  // namespace qarvel::cli
