#include "RenderingBase/public/KVRRbaMaterialFittingController.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

using Controller = KVRRbaMaterialFittingController;

struct FittingArguments {};

int runFitting(Context& context, const FittingArguments&) {
    if (!measured("KVRRbaMaterialFittingController", "GetMaterialFittingController",
                  &Controller::GetMaterialFittingController))
        throw Failure("expected memory for the controller of material fitting, found too little");
    const bool glossiness = Controller::getMaterialGlossFittingActiveState();
    const bool fresnel = Controller::getMaterialFresnelFittingState();
    const auto mode = static_cast<int>(Controller::getGlossinessFittingMode());
    if (context.json)
        printJson(*context.out, {{"glossinessFitting", glossiness},
                                 {"fresnelFitting", fresnel},
                                 {"glossinessMode", mode}});
    else
        *context.out << "glossiness fitting  " << onOrOff(glossiness) << '\n'
                     << "Fresnel fitting     " << onOrOff(fresnel) << '\n'
                     << "glossiness mode     " << mode << '\n';
    return kDone;
}

}  // namespace

void addFittingCommand(CLI::App& program, Context& context) {
    addCommand<FittingArguments>(
        program, context, runFitting,
        {"fitting",
         "Show whether material parameters are fitted. RND_MATERIAL_NOT_FITTED, when it is "
         "defined, even without a value, turns fitting off.",
         "rba fitting\nRND_MATERIAL_NOT_FITTED= rba --json fitting"});
}

}  // namespace rb::cli
