#include "RenderingBase/host/visu/KVRGraphicCard.h"
#include "RenderingBase/public/KVRRbaVisuServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/PathList.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

struct VendorArguments {};

int runVendor(Context& context, const VendorArguments&) {
    KVRString vendor;
    measured("KVRRbaVisuServices", "GetGraphicCardVendor",
             [&] { return KVRRbaVisuServices::GetGraphicCardVendor(vendor); });
    const unsigned id = KVRGetGraphicCardVendorID();
    if (context.json)
        printJson(*context.out, {{"vendor", vendor.CastToCharPtr()}, {"id", id}});
    else
        *context.out << vendor << (id == 0 ? " (no PCI adapter found)" : "") << '\n';
    return kDone;
}

struct UnitArguments {
    std::vector<std::string> units;
};

struct UnitFacts {
    std::string magnitude;
    double factor = 0;  // coherent units of the SI in one
    bool isLength = false;
};

UnitFacts readUnit(const std::string& symbol) {
    const auto unit = KVRVar<KVRICkeUnit>::Adopt(KVRParmDictionary::FindUnit(symbol));
    if (!unit)
        throw Failure(
            named(symbol, "symbol"),
            "expected the symbol of a unit, as in um, mm, deg or cd/m2, found another text");
    const auto magnitude = KVRVar<KVRICkeMagnitude>::Adopt(unit->GetMagnitude());
    const bool isLength = measured("KVRRbaVisuServices", "IsMetricUnit",
                                   [&] { return KVRRbaVisuServices::IsMetricUnit(*unit.Get()); });
    return {std::string(magnitude->GetName().View()), unit->GetFactor(), isLength};
}

Json toJson(const std::string& symbol, const UnitFacts& facts) {
    return {{"unit", symbol},
            {"magnitude", facts.magnitude},
            {"factor", facts.factor},
            {"isLength", facts.isLength}};
}

void printText(std::ostream& out, const std::string& symbol, const UnitFacts& facts) {
    out << onOneLine(symbol) << ": " << facts.magnitude << ", factor " << Json(facts.factor).dump()
        << (facts.isLength ? ", a length\n" : "\n");
}

int runUnit(Context& context, const UnitArguments& arguments) {
    return reportOnPaths<UnitFacts>(context, arguments.units,
                                    {readUnit, toJson, printText, "unit"});
}

void addUnit(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<UnitArguments>(
        group, context, runUnit,
        {"unit",
         "Show what units measure, how much one of each is in the coherent unit of the SI, and "
         "whether they measure lengths. The factor of a temperature is that of its degree.",
         "rba display unit mm in deg\nrba --json display unit fc cd/m2"});
    addArgument(command, "UNIT", arguments.units,
                "Symbols, as in m cm mm in ft deg m2 L kg s Hz degC % lm cd lx cd/m2");
}

}  // namespace

void addDisplayCommands(CLI::App& program, Context& context) {
    CLI::App& group =
        addGroup(program, context, "display", "Ask about the graphics adapter and about units.");
    addCommand<VendorArguments>(
        group, context, runVendor,
        {"vendor",
         "Show who made the graphics adapter that drives the screen: nvidia, amd, intel or other. "
         "JSON also has its PCI vendor id, 0 without a PCI adapter.",
         "rba display vendor\nrba --json display vendor"});
    addUnit(group, context);
}

}  // namespace rb::cli
