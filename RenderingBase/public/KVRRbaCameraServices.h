#pragma once

/// @file  Camera services: from the settings of a photographic camera to those of a renderer.
///
///     const double ev = KVRRbaCameraServices::ComputeEVValuefromISO(400, 1.0 / 60, 5.6);
///     double x = 0, y = 0;
///     if (Succeeded(KVRRbaCameraServices::Convert2DFocusPointRatioToScreenCoordinates(
///             0.5, 0.5, 1920, 1080, x, y)))  // (1440, 270)
///         ...
///
/// Nothing is checked but what is said; NaN and infinities go through the formulas as they come.
/// Threads: the operations on numbers may be called anywhere at once; those on a viewpoint belong
/// where the viewpoint belongs.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRMath.h"
#include "RenderingBase/host/base/KVRResult.h"

class KVR3DViewpoint;

/// What a user's colour correction value v becomes for a renderer: a factor that is 1 for v = 0, or
/// an offset that is 0 for v = 0.
enum class ColorCorrectionParameter : int {
    Factor0 = 0,  ///< v x 0.00333 + 1
    Factor1 = 1,  ///< v x 0.02 + 1
    Offset2 = 2,  ///< v x 0.0025
    Offset3 = 3,  ///< v x 0.005
    Factor4 = 4,  ///< v x 0.01 + 1
    Offset5 = 5,  ///< v x 0.01
};

/// A class of static operations; there are no objects of it.
class KVR_EXPORT KVRRbaCameraServices {
public:
    KVRRbaCameraServices() = delete;

    /// Seconds. 0.006 in single precision, 0.006000000052154064; kept for compatibility.
    static constexpr double kDefaultExposureTime = static_cast<double>(0.006F);
    static constexpr double kDefaultAperture = 8.0;  ///< f-number.

    /// The exposure value of a film sensitivity, log2(K iso / (t N^2)) with
    /// K = 2^-1.4 x 18 / 1632.4.
    ///
    /// One more for twice the sensitivity or half the time, two more for half the f-number. This is
    /// not the exposure value at ISO 100 of photographers, which falls with the sensitivity and
    /// rises with the f-number.
    /// @param iso       Arithmetic ISO speed.
    /// @param time      t, in seconds. 0 gives infinity, a negative one NaN.
    /// @param aperture  N, the f-number; 0 stands for the default.
    /// @return  -1.4 for a sensitivity of 0 or less; kept for compatibility.
    static double ComputeEVValuefromISO(double iso, double time, double aperture);
    /// The same with default exposure time and aperture.
    static double ComputeEVValuefromISO(double iso);

    /// The film sensitivity of an exposure value, 2^ev t N^2 / K: the inverse of
    /// `ComputeEVValuefromISO`, but an aperture of 0 gives 0; kept for compatibility.
    static double ComputeISOfromEVValue(double ev, double time, double aperture);
    /// The same with default exposure time and aperture.
    static double ComputeISOfromEVValue(double ev);

    /// Places a focus point in a viewport.
    /// @param rx, ry         -1 to 1 from the centre: rx grows to the right, ry upwards.
    /// @param width, height  Pixels.
    /// @param sx, sy         Pixels from the top left corner: sx grows to the right, sy downwards.
    /// @return  0, also on the edges, and for a ratio that is NaN, which gives NaN. Errors: E_FAIL
    ///          for a point outside the viewport; @p sx and @p sy are its centre then.
    static HRESULT Convert2DFocusPointRatioToScreenCoordinates(double rx, double ry, double width,
                                                               double height, double& sx,
                                                               double& sy);

    /// The opposite. A viewport without width or height gives NaN in that direction for a point at
    /// 0, and 0 is returned, but for other points E_FAIL.
    /// @return  0, also on the edges. Errors: E_FAIL for a point outside the viewport; @p rx and
    ///          @p ry are 0 then.
    static HRESULT Convert2DFocusPointScreenCoordinatesToRatio(double sx, double sy, double width,
                                                               double height, double& rx,
                                                               double& ry);

    /// How far from the eye a point is in focus, in the unit of the scene: along the direction of
    /// sight for a parallel projection, so that it is negative behind the eye, else the length of
    /// the way. Computed in single precision: a length from 1.8e19 on is infinite.
    /// @param viewpoint  Null is a fatal error.
    static float GetFocusDistance(const KVR3DViewpoint* viewpoint, const KVRMathPointf& point);

    /// Sets the focus of a conic viewpoint to @p distance. A parallel one has its origin A moved
    /// along the line of sight instead, to A + w (d / |w| - 1) with w from A to the target:
    /// afterwards the target lies |2 |w| - d| away, which is d for d = |w| only; kept for
    /// compatibility. Without effect when origin and target coincide, and on other projections.
    /// @param viewpoint  Null is a fatal error.
    static void SetFocusDistance(KVR3DViewpoint* viewpoint, float distance);

    /// Turns a user's colour correction value into a parameter of a renderer.
    /// @return  0 for another parameter than those listed.
    static double convertToRenderingParam(double value, ColorCorrectionParameter parameter);
};
