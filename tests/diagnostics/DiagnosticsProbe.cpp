// Shows what the library made of the environment that it was loaded in.
//
//     diagnostics_probe trace       one trace line of each severity from -128 to 127
//     diagnostics_probe settings    the settings, after every variable was changed to "changed":
//                                   lines "accessor NAME=VALUE" and "all NAME=VALUE", or
//                                   "NAME undefined" for null

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/public/KVRRbaSettings.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

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

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 2 ? argv[1] : "";
    if (mode == "trace") {
        traceEverySeverity();
    } else if (mode == "settings") {
        showSettings();
    } else {
        return 2;
    }
    return 0;
}
