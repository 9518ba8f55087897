#include "RenderingBase/host/app/KVRParmDictionary.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <string>

namespace {

using Unit = KVRVar<KVRICkeUnit>;
using Magnitude = KVRVar<KVRICkeMagnitude>;

Unit unit(const char* symbol) { return Unit::Adopt(KVRParmDictionary::FindUnit(symbol)); }
Magnitude magnitude(const char* name) {
    return Magnitude::Adopt(KVRParmDictionary::FindMagnitude(name));
}
Magnitude magnitudeOf(const Unit& unit) { return Magnitude::Adopt(unit->GetMagnitude()); }

/// NaN when there is no such conversion.
double converted(double value, const char* from, const char* to) {
    double result = std::numeric_limits<double>::quiet_NaN();
    KVRParmDictionary::Convert(value, *unit(from).Get(), *unit(to).Get(), result);
    return result;
}

/// A unit of a host's client.
class LooseUnit : public KVRClass<"LooseUnit", KVRICkeUnit> {
public:
    explicit LooseUnit(KVRICkeMagnitude* magnitude) : m_magnitude(magnitude) {}
    KVRUnicodeString GetSymbol() const override { return "loose"; }
    KVRICkeMagnitude* GetMagnitude() const override { return Magnitude(m_magnitude).Detach(); }
    double GetFactor() const override { return 7; }
    double ToSi(double value) const override { return value * 7; }
    double FromSi(double value) const override { return value / 7; }

private:
    Magnitude m_magnitude;
};

/// A magnitude of a host's client.
class LooseMagnitude : public KVRClass<"LooseMagnitude", KVRICkeMagnitude> {
public:
    explicit LooseMagnitude(const char* name) : m_name(name) {}
    KVRUnicodeString GetName() const override { return m_name; }
    int IsEqual(const KVRICkeMagnitude* other) const override { return other == this ? 1 : 0; }

private:
    KVRUnicodeString m_name;
};

TEST(ParmDictionary, length_type_names_the_magnitude_of_lengths) {
    EXPECT_EQ(KVRParmDictionary::LengthType->Name(), KVRUnicodeString("LENGTH"));
    const auto length = magnitude("LENGTH");
    ASSERT_TRUE(length);
    EXPECT_EQ(length->GetName(), KVRUnicodeString("LENGTH"));
}

TEST(ParmDictionary, type_that_the_host_does_not_have_is_a_null_handle) {
    EXPECT_THROW(KVRParmType()->Name(), KVRNullHandleError);
}

TEST(ParmDictionary, unknown_names_and_symbols_give_null) {
    for (const char* name : {"", "length", "LENGTH ", "WARMTH", "m"})
        EXPECT_FALSE(magnitude(name)) << name;
    for (const char* symbol : {"", "M", " m", "furlong", "LENGTH"})
        EXPECT_FALSE(unit(symbol)) << symbol;
}

TEST(ParmDictionary, factors_are_those_of_the_definitions) {
    struct Fact {
        const char *symbol, *magnitude;
        double factor;
    };
    // Decimal values as NIST SP 811, B.8, prints them; where it has all digits the value is exact.
    const Fact facts[] = {{"m", "LENGTH", 1},
                          {"km", "LENGTH", 1000},
                          {"dm", "LENGTH", 0.1},
                          {"cm", "LENGTH", 0.01},
                          {"mm", "LENGTH", 0.001},
                          {"um", "LENGTH", 1e-6},
                          {"nm", "LENGTH", 1e-9},
                          {"in", "LENGTH", 0.0254},
                          {"ft", "LENGTH", 0.3048},
                          {"yd", "LENGTH", 0.9144},
                          {"mi", "LENGTH", 1609.344},
                          {"nmi", "LENGTH", 1852},
                          {"m2", "AREA", 1},
                          {"km2", "AREA", 1e6},
                          {"dm2", "AREA", 0.01},
                          {"cm2", "AREA", 1e-4},
                          {"mm2", "AREA", 1e-6},
                          {"ha", "AREA", 1e4},
                          {"in2", "AREA", 6.4516e-4},
                          {"ft2", "AREA", 9.290304e-2},
                          {"yd2", "AREA", 0.83612736},
                          {"m3", "VOLUME", 1},
                          {"dm3", "VOLUME", 1e-3},
                          {"cm3", "VOLUME", 1e-6},
                          {"mm3", "VOLUME", 1e-9},
                          {"L", "VOLUME", 1e-3},
                          {"mL", "VOLUME", 1e-6},
                          {"in3", "VOLUME", 1.6387064e-5},
                          {"ft3", "VOLUME", 2.8316846592e-2},
                          {"gal", "VOLUME", 3.785411784e-3},
                          {"rad", "ANGLE", 1},
                          {"mrad", "ANGLE", 1e-3},
                          {"deg", "ANGLE", 0.017453292519943295},
                          {"arcmin", "ANGLE", 2.908882086657216e-4},
                          {"arcsec", "ANGLE", 4.84813681109536e-6},
                          {"grad", "ANGLE", 0.015707963267948967},
                          {"turn", "ANGLE", 6.283185307179586},
                          {"sr", "SOLID_ANGLE", 1},
                          {"deg2", "SOLID_ANGLE", 3.0461741978670857e-4},
                          {"kg", "MASS", 1},
                          {"t", "MASS", 1000},
                          {"g", "MASS", 1e-3},
                          {"mg", "MASS", 1e-6},
                          {"lb", "MASS", 0.45359237},
                          {"oz", "MASS", 0.028349523125},
                          {"s", "TIME", 1},
                          {"ms", "TIME", 1e-3},
                          {"us", "TIME", 1e-6},
                          {"ns", "TIME", 1e-9},
                          {"min", "TIME", 60},
                          {"h", "TIME", 3600},
                          {"d", "TIME", 86400},
                          {"Hz", "FREQUENCY", 1},
                          {"kHz", "FREQUENCY", 1e3},
                          {"MHz", "FREQUENCY", 1e6},
                          {"GHz", "FREQUENCY", 1e9},
                          {"m/s", "SPEED", 1},
                          {"km/h", "SPEED", 0.2777777777777778},
                          {"mi/h", "SPEED", 0.44704},
                          {"ft/s", "SPEED", 0.3048},
                          {"J", "ENERGY", 1},
                          {"kJ", "ENERGY", 1e3},
                          {"MJ", "ENERGY", 1e6},
                          {"Wh", "ENERGY", 3600},
                          {"kWh", "ENERGY", 3.6e6},
                          {"W", "POWER", 1},
                          {"mW", "POWER", 1e-3},
                          {"kW", "POWER", 1e3},
                          {"MW", "POWER", 1e6},
                          {"K", "TEMPERATURE", 1},
                          {"degC", "TEMPERATURE", 1},
                          {"degF", "TEMPERATURE", 0.5555555555555556},
                          {"degR", "TEMPERATURE", 0.5555555555555556},
                          {"1", "RATIO", 1},
                          {"%", "RATIO", 0.01},
                          {"ppm", "RATIO", 1e-6},
                          {"lm", "LUMINOUS_FLUX", 1},
                          {"klm", "LUMINOUS_FLUX", 1000},
                          {"cd", "LUMINOUS_INTENSITY", 1},
                          {"mcd", "LUMINOUS_INTENSITY", 1e-3},
                          {"kcd", "LUMINOUS_INTENSITY", 1000},
                          {"lx", "ILLUMINANCE", 1},
                          {"klx", "ILLUMINANCE", 1000},
                          {"fc", "ILLUMINANCE", 10.763910416709722},
                          {"ph", "ILLUMINANCE", 1e4},
                          {"cd/m2", "LUMINANCE", 1},
                          {"kcd/m2", "LUMINANCE", 1000},
                          {"sb", "LUMINANCE", 1e4},
                          {"fL", "LUMINANCE", 3.4262590996353905}};
    std::set<std::string> symbols;
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.symbol);
        symbols.insert(fact.symbol);
        const auto found = unit(fact.symbol);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->GetSymbol(), KVRUnicodeString(fact.symbol));
        EXPECT_EQ(magnitudeOf(found)->GetName(), KVRUnicodeString(fact.magnitude));
        EXPECT_DOUBLE_EQ(found->GetFactor(), fact.factor);
    }
    std::set<std::string> listed;
    for (const Unit& each : KVRParmDictionary::ListUnits())
        listed.emplace(each->GetSymbol().View());
    EXPECT_EQ(listed, symbols);
    EXPECT_EQ(KVRParmDictionary::ListUnits().size(), symbols.size());  // no symbol twice
}

TEST(ParmDictionary, decimal_factors_are_the_nearest_doubles) {
    EXPECT_EQ(unit("in")->GetFactor(), 0.0254);
    EXPECT_EQ(unit("ft")->GetFactor(), 0.3048);
    EXPECT_EQ(unit("mi")->GetFactor(), 1609.344);
    EXPECT_EQ(unit("lb")->GetFactor(), 0.45359237);
    EXPECT_EQ(unit("gal")->GetFactor(), 3.785411784e-3);
    EXPECT_EQ(unit("mm")->GetFactor(), 0.001);
}

TEST(ParmDictionary, values_convert_between_units_of_one_magnitude) {
    EXPECT_EQ(converted(1, "in", "mm"), 25.4);
    EXPECT_EQ(converted(1, "ft", "in"), 12);
    EXPECT_EQ(converted(1, "mi", "ft"), 5280);
    EXPECT_DOUBLE_EQ(converted(204, "in", "ft"), 17);  // 17.000000000000004
    EXPECT_EQ(converted(1, "gal", "in3"), 231);
    EXPECT_EQ(converted(1, "lb", "oz"), 16);
    EXPECT_EQ(converted(-2.5, "km", "m"), -2500);
    EXPECT_DOUBLE_EQ(converted(90, "deg", "grad"), 100);
    EXPECT_DOUBLE_EQ(converted(1, "turn", "deg"), 360);
    EXPECT_DOUBLE_EQ(converted(1, "deg", "arcsec"), 3600);
    EXPECT_DOUBLE_EQ(converted(36, "km/h", "m/s"), 10);
    EXPECT_EQ(converted(25, "%", "1"), 0.25);
}

TEST(ParmDictionary, temperatures_count_from_their_own_zero) {
    constexpr double kRounding = 1e-12 * 700;  // of the sums, which reach 700
    EXPECT_EQ(converted(0, "degC", "K"), 273.15);
    EXPECT_NEAR(converted(100, "degC", "degF"), 212, kRounding);
    EXPECT_NEAR(converted(-40, "degF", "degC"), -40, kRounding);
    EXPECT_NEAR(converted(0, "K", "degF"), -459.67, kRounding);
    EXPECT_NEAR(converted(32, "degF", "degR"), 491.67, kRounding);
    EXPECT_EQ(converted(21.7, "degF", "degF"), 21.7);
}

TEST(ParmDictionary, conversion_and_its_inverse_give_the_value_back) {
    constexpr double kRounding = 1e-12 * 460;
    for (const Unit& from : KVRParmDictionary::ListUnits()) {
        for (const Unit& to : KVRParmDictionary::ListUnits()) {
            double there = 0, back = 0;
            const HRESULT status = KVRParmDictionary::Convert(3.75, *from.Get(), *to.Get(), there);
            const bool same = magnitudeOf(from)->GetName() == magnitudeOf(to)->GetName();
            EXPECT_EQ(status, same ? S_OK : E_INVALIDARG);
            if (!same) continue;
            EXPECT_EQ(KVRParmDictionary::Convert(there, *to.Get(), *from.Get(), back), S_OK);
            EXPECT_NEAR(back, 3.75, kRounding) << from->GetSymbol() << " and " << to->GetSymbol();
        }
    }
}

TEST(ParmDictionary, conversion_between_magnitudes_is_refused_and_writes_nothing) {
    double result = 99;
    EXPECT_EQ(KVRParmDictionary::Convert(1, *unit("m").Get(), *unit("s").Get(), result),
              E_INVALIDARG);
    LooseUnit without(nullptr);
    EXPECT_EQ(KVRParmDictionary::Convert(1, *unit("m").Get(), without, result), E_INVALIDARG);
    EXPECT_EQ(KVRParmDictionary::Convert(1, without, *unit("m").Get(), result), E_INVALIDARG);
    EXPECT_EQ(KVRParmDictionary::Convert(1, without, without, result), E_INVALIDARG);
    EXPECT_EQ(result, 99);
}

TEST(ParmDictionary, units_of_a_client_convert_with_those_of_the_host) {
    LooseUnit seven(magnitude("LENGTH").Get());
    double result = 0;
    EXPECT_EQ(KVRParmDictionary::Convert(2, seven, *unit("cm").Get(), result), S_OK);
    EXPECT_DOUBLE_EQ(result, 1400);
    EXPECT_EQ(KVRParmDictionary::Convert(1400, *unit("cm").Get(), seven, result), S_OK);
    EXPECT_DOUBLE_EQ(result, 2);
}

TEST(ParmDictionary, magnitudes_are_equal_by_their_name) {
    const auto length = magnitude("LENGTH");
    EXPECT_NE(length->IsEqual(magnitudeOf(unit("in")).Get()), 0);
    EXPECT_EQ(length->IsEqual(magnitude("AREA").Get()), 0);
    EXPECT_EQ(length->IsEqual(nullptr), 0);
    LooseMagnitude sameName("LENGTH"), other("WARMTH");
    EXPECT_NE(length->IsEqual(&sameName), 0);
    EXPECT_EQ(length->IsEqual(&other), 0);
}

TEST(ParmDictionary, what_is_built_in_outlives_its_references) {
    KVRICkeUnit* metre = KVRParmDictionary::FindUnit("m");
    ASSERT_NE(metre, nullptr);
    const unsigned left = metre->Release();
    EXPECT_GE(left, 1U);
    EXPECT_EQ(unit("m").Get(), metre);
    KVRICkeMagnitude* length = metre->GetMagnitude();
    EXPECT_EQ(magnitude("LENGTH").Get(), length);
    EXPECT_GE(length->Release(), 1U);
}

TEST(ParmDictionary, answers_the_interfaces_of_the_modeler) {
    const auto metre = unit("m");
    EXPECT_STREQ(metre->IsA(), "KVRCkeUnit");
    EXPECT_TRUE(KVRQuery<KVRICkeUnit>(metre));
    EXPECT_FALSE(KVRQuery<KVRICkeMagnitude>(metre));
    EXPECT_TRUE(KVRQuery<KVRICkeMagnitude>(magnitudeOf(metre)));
}

}  // namespace
