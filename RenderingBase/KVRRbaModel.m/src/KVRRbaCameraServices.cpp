#include "RenderingBase/public/KVRRbaCameraServices.h"

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/host/base/KVRFatalError.h"
#include "RenderingBase/host/visu/KVR3DViewpoint.h"

#include <cmath>

namespace {

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaCameraServices");

// The lines that fatal errors name, wherever they stand; kept for compatibility.
constexpr int kGetFocusLine = 126;
constexpr int kSetFocusLine = 139;

constexpr double kExponent = -1.4;

double computeExposureConstant() {
    static const double power = std::exp2(kExponent);
    return power * 18.0 / 1632.4;
}

}  // namespace

double KVRRbaCameraServices::ComputeEVValuefromISO(double iso) {
    return ComputeEVValuefromISO(iso, kDefaultExposureTime, kDefaultAperture);
}

double KVRRbaCameraServices::ComputeEVValuefromISO(double iso, double time, double aperture) {
    if (iso <= 0.0) return kExponent;
    if (aperture == 0.0) aperture = kDefaultAperture;
    return std::log2(computeExposureConstant() / (time * aperture * aperture) * iso);
}

double KVRRbaCameraServices::ComputeISOfromEVValue(double ev) {
    return ComputeISOfromEVValue(ev, kDefaultExposureTime, kDefaultAperture);
}

double KVRRbaCameraServices::ComputeISOfromEVValue(double ev, double time, double aperture) {
    static const double constant = computeExposureConstant();
    return std::exp2(ev) * (time * aperture * aperture / constant);
}

HRESULT KVRRbaCameraServices::Convert2DFocusPointRatioToScreenCoordinates(double rx, double ry,
                                                                          double width,
                                                                          double height, double& sx,
                                                                          double& sy) {
    sx = rx * width * 0.5 + width * 0.5;
    sy = height * 0.5 - ry * height * 0.5;
    if (!(sx < 0.0 || sx > width || sy < 0.0 || sy > height)) return S_OK;
    sx = width * 0.5;
    sy = height * 0.5;
    return E_FAIL;
}

HRESULT KVRRbaCameraServices::Convert2DFocusPointScreenCoordinatesToRatio(double sx, double sy,
                                                                          double width,
                                                                          double height, double& rx,
                                                                          double& ry) {
    const double fromCentre = sx - width * 0.5;
    rx = (fromCentre + fromCentre) / width;
    ry = (sy - height * 0.5) * -2.0 / height;
    if (!(rx < -1.0 || rx > 1.0 || ry < -1.0 || ry > 1.0)) return S_OK;
    rx = 0.0;
    ry = 0.0;
    return E_FAIL;
}

float KVRRbaCameraServices::GetFocusDistance(const KVR3DViewpoint* viewpoint,
                                             const KVRMathPointf& point) {
    if (!viewpoint) KVRFatalErrorSimple("viewpoint", kSource, kGetFocusLine);
    const KVRMathVectorf way = point - viewpoint->GetOrigin();
    if (viewpoint->GetProjectionType() != KVR3DViewpoint::kParallel) return way.Norm();
    return way * viewpoint->GetSightDirection();
}

void KVRRbaCameraServices::SetFocusDistance(KVR3DViewpoint* viewpoint, float distance) {
    if (!viewpoint) KVRFatalErrorSimple("viewpoint", kSource, kSetFocusLine);
    const int projection = viewpoint->GetProjectionType();
    if (projection == KVR3DViewpoint::kConic) return viewpoint->SetFocus(distance);
    if (projection != KVR3DViewpoint::kParallel) return;
    const KVRMathPointf origin = viewpoint->GetOrigin();
    const KVRMathVectorf way = viewpoint->GetTarget() - origin;
    const float length = way.Norm();
    if (length == 0.0F) return;
    viewpoint->SetOrigin(origin + way * (distance / length - 1.0F));
}

double KVRRbaCameraServices::convertToRenderingParam(double value,
                                                     ColorCorrectionParameter parameter) {
    switch (parameter) {
        case ColorCorrectionParameter::Factor0:
            return value * 0.00333 + 1.0;
        case ColorCorrectionParameter::Factor1:
            return value * 0.02 + 1.0;
        case ColorCorrectionParameter::Offset2:
            return value * 0.0025;
        case ColorCorrectionParameter::Offset3:
            return value * 0.005;
        case ColorCorrectionParameter::Factor4:
            return value * 0.01 + 1.0;
        case ColorCorrectionParameter::Offset5:
            return value * 0.01;
    }
    return 0.0;
}
