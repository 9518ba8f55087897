// Values of units outside the SI: NIST Special Publication 811 (2008), appendix B.8; SI Brochure,
// 9th edition, table 8 (min, h, d, deg, arcmin, arcsec, ha, L, t). The yard and the pound of 1959
// are exact, and all others of their system are multiples of them.
#include "RenderingBase/host/app/UnitTable.h"

#include <numbers>

namespace rb::app {
namespace {

constexpr double kPi = std::numbers::pi;

constexpr UnitEntry kLength[] = {{"m", 1},
                                 {"km", 1000},
                                 {"dm", 1, 10},
                                 {"cm", 1, 100},
                                 {"mm", 1, 1000},
                                 {"um", 1, 1e6},
                                 {"nm", 1, 1e9},
                                 {"in", 254, 10000},
                                 {"ft", 3048, 10000},
                                 {"yd", 9144, 10000},
                                 {"mi", 1609344, 1000},
                                 {"nmi", 1852}};
constexpr UnitEntry kArea[] = {{"m2", 1},
                               {"km2", 1e6},
                               {"dm2", 1, 100},
                               {"cm2", 1, 1e4},
                               {"mm2", 1, 1e6},
                               {"ha", 1e4},
                               {"in2", 254.0 * 254, 1e8},
                               {"ft2", 3048.0 * 3048, 1e8},
                               {"yd2", 9144.0 * 9144, 1e8}};
constexpr double kCubicInch = 254.0 * 254 * 254;  // 1e-12 cubic metres
constexpr UnitEntry kVolume[] = {{"m3", 1},
                                 {"dm3", 1, 1e3},
                                 {"cm3", 1, 1e6},
                                 {"mm3", 1, 1e9},
                                 {"L", 1, 1e3},
                                 {"mL", 1, 1e6},
                                 {"in3", kCubicInch, 1e12},
                                 {"ft3", 3048.0 * 3048 * 3048, 1e12},
                                 {"gal", 231 * kCubicInch, 1e12}};
constexpr UnitEntry kAngle[] = {{"rad", 1},
                                {"mrad", 1, 1000},
                                {"deg", kPi, 180},
                                {"arcmin", kPi, 180 * 60},
                                {"arcsec", kPi, 180 * 3600},
                                {"grad", kPi, 200},
                                {"turn", 2 * kPi}};
constexpr UnitEntry kSolidAngle[] = {{"sr", 1}, {"deg2", kPi* kPi, 180 * 180}};
constexpr UnitEntry kMass[] = {{"kg", 1},      {"t", 1000},           {"g", 1, 1000},
                               {"mg", 1, 1e6}, {"lb", 45359237, 1e8}, {"oz", 45359237, 16e8}};
constexpr UnitEntry kTime[] = {{"s", 1},    {"ms", 1, 1e3}, {"us", 1, 1e6}, {"ns", 1, 1e9},
                               {"min", 60}, {"h", 3600},    {"d", 86400}};
constexpr UnitEntry kFrequency[] = {{"Hz", 1}, {"kHz", 1e3}, {"MHz", 1e6}, {"GHz", 1e9}};
constexpr UnitEntry kSpeed[] = {
    {"m/s", 1}, {"km/h", 1000, 3600}, {"mi/h", 1609344, 3600e3}, {"ft/s", 3048, 10000}};
constexpr UnitEntry kEnergy[] = {{"J", 1}, {"kJ", 1e3}, {"MJ", 1e6}, {"Wh", 3600}, {"kWh", 3.6e6}};
constexpr UnitEntry kPower[] = {{"W", 1}, {"mW", 1, 1000}, {"kW", 1e3}, {"MW", 1e6}};
constexpr UnitEntry kTemperature[] = {
    {"K", 1}, {"degC", 1, 1, 273.15}, {"degF", 5, 9, 459.67}, {"degR", 5, 9}};
constexpr UnitEntry kRatio[] = {{"1", 1}, {"%", 1, 100}, {"ppm", 1, 1e6}};
constexpr UnitEntry kLuminousFlux[] = {{"lm", 1}, {"klm", 1000}};
constexpr UnitEntry kLuminousIntensity[] = {{"cd", 1}, {"mcd", 1, 1000}, {"kcd", 1000}};
// A foot-candle is a lumen to the square foot, a foot-lambert 1/pi candela to it.
constexpr UnitEntry kIlluminance[] = {
    {"lx", 1}, {"klx", 1000}, {"fc", 1e8, 3048.0 * 3048}, {"ph", 1e4}};
constexpr UnitEntry kLuminance[] = {
    {"cd/m2", 1}, {"kcd/m2", 1000}, {"sb", 1e4}, {"fL", 1e8, kPi * 3048 * 3048}};

constexpr MagnitudeEntry kMagnitudes[] = {{"LENGTH", kLength},
                                          {"AREA", kArea},
                                          {"VOLUME", kVolume},
                                          {"ANGLE", kAngle},
                                          {"SOLID_ANGLE", kSolidAngle},
                                          {"MASS", kMass},
                                          {"TIME", kTime},
                                          {"FREQUENCY", kFrequency},
                                          {"SPEED", kSpeed},
                                          {"ENERGY", kEnergy},
                                          {"POWER", kPower},
                                          {"TEMPERATURE", kTemperature},
                                          {"RATIO", kRatio},
                                          {"LUMINOUS_FLUX", kLuminousFlux},
                                          {"LUMINOUS_INTENSITY", kLuminousIntensity},
                                          {"ILLUMINANCE", kIlluminance},
                                          {"LUMINANCE", kLuminance}};

}  // namespace

std::span<const MagnitudeEntry> magnitudeTable() { return kMagnitudes; }

}  // namespace rb::app
