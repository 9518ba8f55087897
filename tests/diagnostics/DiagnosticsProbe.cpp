// Shows what the library made of the environment that it was loaded in.
//
//     diagnostics_probe trace       one trace line of each severity from -128 to 127
//     diagnostics_probe settings    the settings, after every variable was changed to "changed":
//                                   lines "accessor NAME=VALUE" and "all NAME=VALUE", or
//                                   "NAME undefined" for null
//     diagnostics_probe groups      which of some profiling groups are active
//     diagnostics_probe samples     what the profiler keeps of three measures; with
//                                   "-defined-late" the variable is defined after a pause of an
//                                   inactive group, with "-defined-too-late" and
//                                   "-undefined-too-late" changed after that of an active one
//     diagnostics_probe fitting     the switches of material fitting, after what is behind the
//                                   word was done in this order: "-set", "-made", "-defined"

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/public/KVRRbaMaterialFittingController.h"
#include "RenderingBase/public/KVRRbaProfiler.h"
#include "RenderingBase/public/KVRRbaSettings.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Accessor {
    const char* name;
    const char* (*read)();
};

#define RB_ACCESSOR(name) \
    { #name, &KVRRbaSettings::name }
constexpr Accessor kAccessors[] = {
    RB_ACCESSOR(KVRCommandPath),
    RB_ACCESSOR(KVRGraphicPath),
    RB_ACCESSOR(KVRInstallPath),
    RB_ACCESSOR(KVRStartupPath),
    RB_ACCESSOR(KVRTemp),
    RB_ACCESSOR(KVRRdgAppName),
    RB_ACCESSOR(KVRRdgApplyIrradianceLUT),
    RB_ACCESSOR(KVRRdgBatchUseCustomGamma),
    RB_ACCESSOR(KVRRdgDebug),
    RB_ACCESSOR(KVRRdgDenoiser),
    RB_ACCESSOR(KVRRdgDumpAnimationFile),
    RB_ACCESSOR(KVRRdgEnableBatchColorSpace),
    RB_ACCESSOR(KVRRdgIntermediateImages),
    RB_ACCESSOR(KVRRdgNoArgumentOverride),
    RB_ACCESSOR(KVRRdgNoMemoryCheckSkip),
    RB_ACCESSOR(KVRRdgNoPostEffectsHDR),
    RB_ACCESSOR(KVRRdgNormalizeDepthHDR),
    RB_ACCESSOR(KVRRdgPerfoMonitoring),
    RB_ACCESSOR(KVRRdgTranslationStrategy),
    RB_ACCESSOR(KVRRdgUsePLMChooser),
    RB_ACCESSOR(QLT_TRACE_SEVERITY),
    RB_ACCESSOR(QLT_TRACE_FILES),
};
#undef RB_ACCESSOR

void show(const char* kind, const char* name, const char* value) {
    std::cout << kind << ' ' << name;
    value ? std::cout << '=' << value << '\n' : std::cout << " undefined\n";
}

void showSettings() {
    for (const auto& setting : KVRRbaSettings::All()) setenv(setting.name, "changed", 1);
    for (const auto& [name, read] : kAccessors) show("accessor", name, read());
    for (const auto& [name, value] : KVRRbaSettings::All()) show("all", name, value);
}

void traceEverySeverity() {
    for (int severity = INT8_MIN; severity <= INT8_MAX; ++severity) {
        rb::trace::write(static_cast<std::int8_t>(severity), RB_TRACE_SOURCE("Probe"), " ", 7, " ",
                         "severity ", std::to_string(severity));
    }
}

void showGroups() {
    const KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    setenv("KVRRbaProfilerActiveGroups", "A,B", 1);  // too late
    std::cout << "active:";
    for (const char* name : {"", " ", "A", " A", "A ", "B", " B", ",", "A;B", "A,B"}) {
        if (KVRRbaProfiler::GetInstance().IsActive(name)) std::cout << " <" << name << '>';
    }
    std::cout << (&profiler == &KVRRbaProfiler::GetInstance() ? "\n" : " another profiler\n");
}

void showSamples(std::string_view change) {
    constexpr const char* kVariable = "KVRRbaProfilerKeepAllSamples";
    KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    profiler.Pause("inactive", "timer");
    if (change == "-defined-late") setenv(kVariable, "", 1);
    profiler.SetActive("group", true);
    for (int i = 0; i < 3; ++i) {
        profiler.Resume("group", "timer");
        profiler.Pause("group", "timer");
        if (change == "-defined-too-late") setenv(kVariable, "1", 1);
        if (change == "-undefined-too-late") unsetenv(kVariable);
    }
    const std::vector<double> measuresMs = profiler.GetAllMeasuresMS("group", "timer");
    std::cout << profiler.GetHitCount("group", "timer") << " hits, " << measuresMs.size()
              << " kept";
    const double sumMs = std::accumulate(measuresMs.begin(), measuresMs.end(), 0.0);
    const double totalMs = profiler.GetAccumulatedMS("group", "timer");
    // Whole microseconds each, so that the sums differ by nothing but rounding.
    const bool addsUp = std::llround(sumMs * 1000) == std::llround(totalMs * 1000);
    if (!measuresMs.empty()) std::cout << (addsUp ? ", which add up to the time" : ", not all");
    std::cout << '\n';
}

void showFitting(const std::string& actions) {
    using Controller = KVRRbaMaterialFittingController;
    std::istringstream words(actions);
    for (std::string word; std::getline(words, word, '-');) {
        if (word == "set") {
            Controller::setMaterialGlossFittingActiveState(true);
            Controller::setMaterialFresnelFittingState(false);
            Controller::setGlossinessFittingMode(static_cast<GlossinessFittingMode>(5));
        } else if (word == "made") {
            Controller::GetMaterialFittingController();
        } else if (word == "defined") {
            setenv("RND_MATERIAL_NOT_FITTED", "", 1);
        }
    }
    std::cout << "glossiness " << Controller::getMaterialGlossFittingActiveState() << ", Fresnel "
              << Controller::getMaterialFresnelFittingState() << ", mode "
              << static_cast<int>(Controller::getGlossinessFittingMode()) << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 2 ? argv[1] : "";
    if (mode == "trace") {
        traceEverySeverity();
    } else if (mode == "settings") {
        showSettings();
    } else if (mode == "groups") {
        showGroups();
    } else if (mode.starts_with("samples")) {
        showSamples(mode.substr(7));
    } else if (mode.starts_with("fitting")) {
        showFitting(std::string(mode.substr(7)));
    } else {
        return 2;
    }
    return 0;
}
