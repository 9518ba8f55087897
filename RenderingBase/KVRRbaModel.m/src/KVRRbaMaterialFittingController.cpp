#include "RenderingBase/public/KVRRbaMaterialFittingController.h"

#include "RenderingBase/host/base/KVREnvironment.h"

#include <new>

using Controller = KVRRbaMaterialFittingController;

namespace {

bool isFittingForbidden() {
    static const bool isDefined = KVRGetEnv("RND_MATERIAL_NOT_FITTED") != nullptr;
    return isDefined;
}

}  // namespace

GlossinessFittingMode Controller::_eGlossinessFittingMode = GlossinessFittingMode::Default;
bool Controller::_bMaterialGlossinessFittingState = false;
bool Controller::_bMaterialFresnelFittingState = false;
Controller* Controller::_pMaterialFittingController = nullptr;

Controller::KVRRbaMaterialFittingController() {
    _bMaterialGlossinessFittingState = !isFittingForbidden();
    _bMaterialFresnelFittingState = !isFittingForbidden();
    _eGlossinessFittingMode = GlossinessFittingMode::Default;
}

Controller* Controller::GetMaterialFittingController() {
    if (!_pMaterialFittingController) _pMaterialFittingController = new (std::nothrow) Controller;
    return _pMaterialFittingController;
}

GlossinessFittingMode Controller::getGlossinessFittingMode() { return _eGlossinessFittingMode; }

void Controller::setGlossinessFittingMode(GlossinessFittingMode mode) {
    _eGlossinessFittingMode = mode;
}

bool Controller::getMaterialGlossFittingActiveState() { return _bMaterialGlossinessFittingState; }

void Controller::setMaterialGlossFittingActiveState(bool isActive) {
    _bMaterialGlossinessFittingState = isActive;
}

bool Controller::getMaterialFresnelFittingState() { return _bMaterialFresnelFittingState; }

void Controller::setMaterialFresnelFittingState(bool isOn) { _bMaterialFresnelFittingState = isOn; }
