#include "cli/command_set.h"

namespace qarvel::cli {

void RegisterCalculatorCommands(CommandSet& /*commands*/) {}

}  // namespace qarvel::cli
