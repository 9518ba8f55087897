#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"

namespace rb::cli {

void addIesCommands(CLI::App& program, Context& context) {
    CLI::App& group =
        addGroup(program, context, "ies", "Read, check, sample and draw photometric files.");
    addIesInfo(group, context);
    addIesCheck(group, context);
    addIesTable(group, context);
    addIesPlot(group, context);
}

}  // namespace rb::cli
