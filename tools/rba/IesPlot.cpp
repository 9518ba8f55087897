#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/OutputFile.h"
#include "tools/rba/Paths.h"
#include "tools/rba/PolarDiagram.h"

namespace rb::cli {
namespace {

struct PlotArguments {
    std::string in, out;
};

void writeSvg(const std::string& path, const PolarDiagram& diagram) {
    OutputFile file(typedPath(frameworkPath(path)));
    file.write(polarSvg(diagram, SvgUse::File));
    file.commit();
}

int runPlot(Context& context, const PlotArguments& arguments) {
    const std::string extension = lowerExtension(arguments.out);
    if (extension != "svg" && extension != "png")
        throw UsageError(named(arguments.out) +
                         ": expected a name that ends in svg or png, found '" + extension + "'");
    const PolarDiagram diagram = polarDiagramOf(arguments.in, loadPhotometry(arguments.in));
    if (extension == "svg")
        writeSvg(arguments.out, diagram);
    else
        writeImage(*polarImage(diagram).Get(), arguments.out, "PNG");
    if (context.json)
        printJson(*context.out, {{"path", arguments.out}});
    else if (!context.quiet)
        *context.out << onOneLine(arguments.out) << '\n';
    return kDone;
}

}  // namespace

void addIesPlot(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<PlotArguments>(
        group, context, runPlot,
        {"plot",
         "Draw the polar diagram of a photometric file. It shows the planes C0/C180 and C90/C270 "
         "(of types A and B those through the axis), with rings in candelas, and names the "
         "luminaire, its maker and its lamp. Planes have the values of the file, also those that "
         "tables leave dark. The extension of OUT chooses the format.",
         "rba ies plot street.ies street.svg\nrba ies plot street.ies street.png"});
    addArgument(command, "PATH", arguments.in, "Photometric file");
    addArgument(command, "OUT", arguments.out, "File to write: svg or png");
}

}  // namespace rb::cli
