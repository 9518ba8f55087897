#pragma once

/// @file  The units of KVRParmDictionary as plain values. For its source.

#include <span>

namespace rb::app {

/// A unit; a quantity of v in it is (v + zero) * numerator / denominator in the coherent unit.
///
/// The factor is kept as two numbers, which are integers wherever that can be: the factor is
/// the double next to the definition then.
struct UnitEntry {
    const char* symbol;
    double numerator;
    double denominator = 1;
    double zero = 0;
};

/// A magnitude with its units, the coherent one first.
struct MagnitudeEntry {
    const char* name;
    std::span<const UnitEntry> units;
};

std::span<const MagnitudeEntry> magnitudeTable();

}  // namespace rb::app
