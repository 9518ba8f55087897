#include "RenderingBase/public/KVRRbaSettings.h"

// The log of the library, whose clock starts when the library is loaded.
#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/host/base/KVREnvironment.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <span>

namespace {

// Later changes of the environment must not show, so the text is copied. The copies are plain
// memory and are never freed: code that runs at exit, after the destructors of this library, may
// still ask for a setting.
const char* keptCopy(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

const char* textAtLoad(const char* name) {
    const char* value = KVRGetEnv(name);
    return value ? keptCopy(value) : nullptr;
}

const char* temporaryDirectoryAtLoad() {
    const char* value = textAtLoad("KVRTemp");
    return value ? value : keptCopy(KVRGetTempDirectory().CastToCharPtr());
}

// Initialised in this order when the library is loaded.
const char* const g_commandPath = textAtLoad("KVRCommandPath");
const char* const g_graphicPath = textAtLoad("KVRGraphicPath");
const char* const g_installPath = textAtLoad("KVRInstallPath");
const char* const g_startupPath = textAtLoad("KVRStartupPath");
const char* const g_temp = temporaryDirectoryAtLoad();
const char* const g_appName = textAtLoad("KVRRdgAppName");
const char* const g_applyIrradianceLUT = textAtLoad("KVRRdgApplyIrradianceLUT");
const char* const g_batchUseCustomGamma = textAtLoad("KVRRdgBatchUseCustomGamma");
const char* const g_debug = textAtLoad("KVRRdgDebug");
const char* const g_denoiser = textAtLoad("KVRRdgDenoiser");
const char* const g_dumpAnimationFile = textAtLoad("KVRRdgDumpAnimationFile");
const char* const g_enableBatchColorSpace = textAtLoad("KVRRdgEnableBatchColorSpace");
const char* const g_intermediateImages = textAtLoad("KVRRdgIntermediateImages");
const char* const g_noArgumentOverride = textAtLoad("KVRRdgNoArgumentOverride");
const char* const g_noMemoryCheckSkip = textAtLoad("KVRRdgNoMemoryCheckSkip");
const char* const g_noPostEffectsHDR = textAtLoad("KVRRdgNoPostEffectsHDR");
const char* const g_normalizeDepthHDR = textAtLoad("KVRRdgNormalizeDepthHDR");
const char* const g_perfoMonitoring = textAtLoad("KVRRdgPerfoMonitoring");
const char* const g_translationStrategy = textAtLoad("KVRRdgTranslationStrategy");
const char* const g_usePLMChooser = textAtLoad("KVRRdgUsePLMChooser");
const char* const g_traceSeverity = textAtLoad("QLT_TRACE_SEVERITY");
const char* const g_traceFiles = textAtLoad("QLT_TRACE_FILES");

constexpr std::array kRendererNames = {"iray",        "vessant",   "irt",          "iray_cloud",
                                       "nitro_cloud", "irt_cloud", "vessant_cloud"};

constexpr std::array kReadWhereNeeded = {
    "KVRRdgOldTC",
    "KVR_TEXTURE_NO_COLOR_PROFILE",
    "ZPQ_AC_TEXTURE_LOADER_DISABLE",
    "AC_USE_REP_LIFE_CYCLE",
    "KVRRbaProfilerActiveGroups",
    "KVRRbaProfilerKeepAllSamples",
    "RND_MATERIAL_NOT_FITTED",
};

constexpr std::size_t kReadAtLoadCount = 22;

const char* emptyWhenNull(const char* text) { return text ? text : ""; }

}  // namespace

const char* KVRRbaSettings::KVRCommandPath() { return g_commandPath; }
const char* KVRRbaSettings::KVRGraphicPath() { return g_graphicPath; }
const char* KVRRbaSettings::KVRInstallPath() { return g_installPath; }
const char* KVRRbaSettings::KVRStartupPath() { return g_startupPath; }
const char* KVRRbaSettings::KVRTemp() { return g_temp; }
const char* KVRRbaSettings::KVRRdgAppName() { return g_appName; }
const char* KVRRbaSettings::KVRRdgApplyIrradianceLUT() { return g_applyIrradianceLUT; }
const char* KVRRbaSettings::KVRRdgBatchUseCustomGamma() { return g_batchUseCustomGamma; }
const char* KVRRbaSettings::KVRRdgDebug() { return g_debug; }
const char* KVRRbaSettings::KVRRdgDenoiser() { return g_denoiser; }
const char* KVRRbaSettings::KVRRdgDumpAnimationFile() { return g_dumpAnimationFile; }
const char* KVRRbaSettings::KVRRdgEnableBatchColorSpace() { return g_enableBatchColorSpace; }
const char* KVRRbaSettings::KVRRdgIntermediateImages() { return g_intermediateImages; }
const char* KVRRbaSettings::KVRRdgNoArgumentOverride() { return g_noArgumentOverride; }
const char* KVRRbaSettings::KVRRdgNoMemoryCheckSkip() { return g_noMemoryCheckSkip; }
const char* KVRRbaSettings::KVRRdgNoPostEffectsHDR() { return g_noPostEffectsHDR; }
const char* KVRRbaSettings::KVRRdgNormalizeDepthHDR() { return g_normalizeDepthHDR; }
const char* KVRRbaSettings::KVRRdgPerfoMonitoring() { return g_perfoMonitoring; }
const char* KVRRbaSettings::KVRRdgTranslationStrategy() { return g_translationStrategy; }
const char* KVRRbaSettings::KVRRdgUsePLMChooser() { return g_usePLMChooser; }
const char* KVRRbaSettings::QLT_TRACE_SEVERITY() { return emptyWhenNull(g_traceSeverity); }
const char* KVRRbaSettings::QLT_TRACE_FILES() { return emptyWhenNull(g_traceFiles); }

std::span<const char* const> KVRRbaSettings::RendererNames() { return kRendererNames; }

std::span<const KVRRbaSettings::Setting> KVRRbaSettings::All() {
    thread_local std::array<Setting, kReadAtLoadCount + kReadWhereNeeded.size()> settings = {{
        {"KVRCommandPath", g_commandPath},
        {"KVRGraphicPath", g_graphicPath},
        {"KVRInstallPath", g_installPath},
        {"KVRStartupPath", g_startupPath},
        {"KVRTemp", g_temp},
        {"KVRRdgAppName", g_appName},
        {"KVRRdgApplyIrradianceLUT", g_applyIrradianceLUT},
        {"KVRRdgBatchUseCustomGamma", g_batchUseCustomGamma},
        {"KVRRdgDebug", g_debug},
        {"KVRRdgDenoiser", g_denoiser},
        {"KVRRdgDumpAnimationFile", g_dumpAnimationFile},
        {"KVRRdgEnableBatchColorSpace", g_enableBatchColorSpace},
        {"KVRRdgIntermediateImages", g_intermediateImages},
        {"KVRRdgNoArgumentOverride", g_noArgumentOverride},
        {"KVRRdgNoMemoryCheckSkip", g_noMemoryCheckSkip},
        {"KVRRdgNoPostEffectsHDR", g_noPostEffectsHDR},
        {"KVRRdgNormalizeDepthHDR", g_normalizeDepthHDR},
        {"KVRRdgPerfoMonitoring", g_perfoMonitoring},
        {"KVRRdgTranslationStrategy", g_translationStrategy},
        {"KVRRdgUsePLMChooser", g_usePLMChooser},
        {"QLT_TRACE_SEVERITY", g_traceSeverity},
        {"QLT_TRACE_FILES", g_traceFiles},
    }};
    for (std::size_t i = 0; i < kReadWhereNeeded.size(); ++i) {
        settings[kReadAtLoadCount + i] = {kReadWhereNeeded[i], KVRGetEnv(kReadWhereNeeded[i])};
    }
    return settings;
}
