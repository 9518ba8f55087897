#pragma once

/// @file  Magnitudes (length, angle, illuminance, ...) and the units that they are measured in.
///
///     const auto inch = KVRVar<KVRICkeUnit>::Adopt(KVRParmDictionary::FindUnit("in"));
///     const auto metre = KVRVar<KVRICkeUnit>::Adopt(KVRParmDictionary::FindUnit("m"));
///     double metres = 0;
///     KVRParmDictionary::Convert(12, *inch.Get(), *metre.Get(), metres);  // 0.3048

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/modeler/KVRClass.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <vector>

/// What can be measured. Threads: const members may be called at once. Lifetime: counted.
class KVR_EXPORT KVRICkeMagnitude : public KVRInterface<"KVRICkeMagnitude"> {
public:
    virtual KVRUnicodeString GetName() const = 0;  ///< As in "LENGTH".
    /// 1 when both are the same magnitude, whatever objects they are, else 0; null is none.
    virtual int IsEqual(const KVRICkeMagnitude* other) const = 0;
};

/// A unit of measurement. Threads: const members may be called at once. Lifetime: counted.
class KVR_EXPORT KVRICkeUnit : public KVRInterface<"KVRICkeUnit"> {
public:
    virtual KVRUnicodeString GetSymbol() const = 0;  ///< As in "mm".
    /// What is measured in the unit, with one reference for the caller; null when nobody knows.
    virtual KVRICkeMagnitude* GetMagnitude() const = 0;
    /// How many of the coherent unit of the SI one step of this unit is: 0.001 for "mm".
    virtual double GetFactor() const = 0;
    /// The same quantity in the coherent unit of the SI, and back. More than the factor for units
    /// that count from another zero, as "degC" does.
    virtual double ToSi(double value) const = 0;
    virtual double FromSi(double value) const = 0;
};

/// The type of a parameter. Threads: const members may be called at once. Lifetime: counted.
class KVR_EXPORT KVRICkeParmType : public KVRInterface<"KVRICkeParmType"> {
public:
    virtual KVRUnicodeString Name() const = 0;  ///< That of its magnitude.
};

/// Empty for a type that the host does not have.
using KVRParmType = KVRVar<KVRICkeParmType>;

/// The magnitudes and units of the host; there are no objects of it.
///
///   magnitude            coherent unit   further units
///   LENGTH               m               km dm cm mm um nm in ft yd mi nmi
///   AREA                 m2              km2 dm2 cm2 mm2 ha in2 ft2 yd2
///   VOLUME               m3              dm3 cm3 mm3 L mL in3 ft3 gal
///   ANGLE                rad             mrad deg arcmin arcsec grad turn
///   SOLID_ANGLE          sr              deg2
///   MASS                 kg              t g mg lb oz
///   TIME                 s               ms us ns min h d
///   FREQUENCY            Hz              kHz MHz GHz
///   SPEED                m/s             km/h mi/h ft/s
///   ENERGY               J               kJ MJ Wh kWh
///   POWER                W               mW kW MW
///   TEMPERATURE          K               degC degF degR
///   RATIO                1               % ppm
///   LUMINOUS_FLUX        lm              klm
///   LUMINOUS_INTENSITY   cd              mcd kcd
///   ILLUMINANCE          lx              klx fc ph
///   LUMINANCE            cd/m2           kcd/m2 sb fL
///
/// The gallon is that of the United States, miles are statute miles, pounds and ounces avoirdupois.
/// Values of the units outside the SI: NIST Special Publication 811 (2008), appendix B, and the SI
/// Brochure, 9th edition, table 8.
/// Threads: any. Lifetime: magnitudes and units live until the process ends, whoever lets go.
class KVR_EXPORT KVRParmDictionary {
public:
    KVRParmDictionary() = delete;

    static const KVRParmType LengthType;  ///< Its name is "LENGTH".

    /// Return one reference for the caller; null for a name or symbol that is not in the
    /// dictionary. Capital and small letters differ.
    static KVRICkeMagnitude* FindMagnitude(const KVRUnicodeString& name);
    static KVRICkeUnit* FindUnit(const KVRUnicodeString& symbol);

    /// All units, in the order of the table above.
    static std::vector<KVRVar<KVRICkeUnit>> ListUnits();

    /// Converts a value from one unit to another of the same magnitude.
    /// @param result  untouched on failure.
    /// Errors: E_INVALIDARG when the magnitudes differ or one of the units has none.
    static HRESULT Convert(double value, const KVRICkeUnit& from, const KVRICkeUnit& to,
                           double& result);
};
