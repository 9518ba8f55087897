#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"

namespace rb::cli {

void addImageCommands(CLI::App& program, Context& context) {
    CLI::App& group =
        addGroup(program, context, "image", "Find, load, measure and convert images.");
    addImageInfo(group, context);
    addImageFind(group, context);
    addImageConvert(group, context);
    addImageDerivations(group, context);
    addImageIcon(group, context);
    addImageDds(group, context);
    addImageMirrorBall(group, context);
    addImageUnits(group, context);
    addImageHalf(group, context);
}

}  // namespace rb::cli
