#pragma once

/// @file  Tells rendering applications whether they fit the parameters of materials.
///
///     KVRRbaMaterialFittingController::GetMaterialFittingController();  // first of all
///     if (KVRRbaMaterialFittingController::getMaterialFresnelFittingState()) ...

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/modeler/KVRClass.h"

#include <cstdint>

/// How glossiness is fitted: a number that applications agree upon.
enum class GlossinessFittingMode : std::int32_t {
    Default = 2,
};

/// Three switches of the process. Until the controller is made, nothing is fitted and the mode is
/// the default; making it overwrites what was set before: both fittings are on then, unless the
/// environment variable RND_MATERIAL_NOT_FITTED is defined, even without a value, and the mode is
/// the default.
///
/// Copies of the controller share the switches, which are not its own.
/// Threads: nothing is locked; the first GetMaterialFittingController on one thread only.
class KVR_EXPORT KVRRbaMaterialFittingController
    : public KVRClass<"KVRRbaMaterialFittingController"> {
public:
    /// The process's only one, made by the first call; borrowed, it lives as long as the process.
    /// Null without memory.
    static KVRRbaMaterialFittingController* GetMaterialFittingController();

    static GlossinessFittingMode getGlossinessFittingMode();
    static void setGlossinessFittingMode(GlossinessFittingMode mode);

    static bool getMaterialGlossFittingActiveState();
    static void setMaterialGlossFittingActiveState(bool isActive);

    static bool getMaterialFresnelFittingState();
    static void setMaterialFresnelFittingState(bool isOn);

private:
    KVRRbaMaterialFittingController();

    static GlossinessFittingMode _eGlossinessFittingMode;
    static bool _bMaterialGlossinessFittingState;
    static bool _bMaterialFresnelFittingState;
    static KVRRbaMaterialFittingController* _pMaterialFittingController;
};
