#pragma once

/// @file  Settings that come from the environment.
///
/// Most are read once, when the library is loaded, in the order of their declaration, and never
/// change afterwards; a few are read where they are needed. No setting is interpreted here: the
/// code that uses one does (mostly, whether it is defined at all). An empty variable is defined.

#include "RenderingBase/host/base/KVRExport.h"

#include <span>

/// A class of static operations; there are no objects of it. Threads: any.
class KVR_EXPORT KVRRbaSettings {
public:
    KVRRbaSettings() = delete;

    /// The raw text of the variable of the same name when the library was loaded; null when it was
    /// not defined. The texts live as long as the library.
    static const char* KVRCommandPath();
    static const char* KVRGraphicPath();  ///< ";"-list of directories.
    static const char* KVRInstallPath();  ///< ";"-list of directories.
    static const char* KVRStartupPath();  ///< ";"-list of directories.
    /// Where temporary files and caches go; the system's temporary directory when not defined.
    /// Never null.
    static const char* KVRTemp();
    static const char* KVRRdgAppName();
    static const char* KVRRdgApplyIrradianceLUT();
    static const char* KVRRdgBatchUseCustomGamma();
    static const char* KVRRdgDebug();
    static const char* KVRRdgDenoiser();
    static const char* KVRRdgDumpAnimationFile();
    static const char* KVRRdgEnableBatchColorSpace();
    static const char* KVRRdgIntermediateImages();
    static const char* KVRRdgNoArgumentOverride();
    static const char* KVRRdgNoMemoryCheckSkip();
    static const char* KVRRdgNoPostEffectsHDR();
    static const char* KVRRdgNormalizeDepthHDR();
    static const char* KVRRdgPerfoMonitoring();
    static const char* KVRRdgTranslationStrategy();
    static const char* KVRRdgUsePLMChooser();
    /// The trace log's threshold as text; empty when not defined. Never null.
    static const char* QLT_TRACE_SEVERITY();
    /// Kept, and consulted by nobody; empty when not defined. Never null.
    static const char* QLT_TRACE_FILES();

    /// Names of the renderers that the rendering family knows: first three local ones, then four
    /// remote ones.
    static std::span<const char* const> RendererNames();

    /// A variable and its value.
    struct Setting {
        const char* name;
        const char* value;  ///< Null when not defined; KVRTemp has its fallback then.
    };
    /// Every setting, in the order of declaration, behind them those that are read where they are
    /// needed, with their present value. The span lives until the thread's next call.
    static std::span<const Setting> All();
};
