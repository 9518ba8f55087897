#pragma once

/// @file  The commands, one function a group or command. Each is declared in the file of its name.

#include "tools/rba/Context.h"
#include "tools/rba/Precompiled.h"

namespace rb::cli {

void addImageCommands(CLI::App& program, Context& context);
void addImageInfo(CLI::App& group, Context& context);
void addImageFind(CLI::App& group, Context& context);
void addImageConvert(CLI::App& group, Context& context);
void addImageDerivations(CLI::App& group, Context& context);  ///< grey, mono, ... bump
void addImageIcon(CLI::App& group, Context& context);
void addImageDds(CLI::App& group, Context& context);
void addImageMirrorBall(CLI::App& group, Context& context);
void addImageUnits(CLI::App& group, Context& context);
void addImageHalf(CLI::App& group, Context& context);
void addTextureCommands(CLI::App& program, Context& context);
void addIesCommands(CLI::App& program, Context& context);
void addIesInfo(CLI::App& group, Context& context);
void addIesCheck(CLI::App& group, Context& context);
void addIesTable(CLI::App& group, Context& context);
void addIesPlot(CLI::App& group, Context& context);
void addCameraCommands(CLI::App& program, Context& context);
void addCameraExposure(CLI::App& group, Context& context);  ///< ev, iso
void addCameraFocus(CLI::App& group, Context& context);     ///< to-screen, to-ratio, focus
void addEnvCommand(CLI::App& program, Context& context);
void addFittingCommand(CLI::App& program, Context& context);
void addSettingsCommands(CLI::App& program, Context& context);
void addResolveCommand(CLI::App& program, Context& context);
void addDisplayCommands(CLI::App& program, Context& context);
void addTourCommand(CLI::App& program, Context& context);

}  // namespace rb::cli
