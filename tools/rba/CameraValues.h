#pragma once

/// @file  Numbers of the commands about cameras: checked, and printed.

#include "tools/rba/Context.h"
#include "tools/rba/Output.h"

#include <cmath>
#include <string>

namespace rb::cli {

/// Throws UsageError for the argument or option @p name.
[[noreturn]] inline void refuse(const char* name, const char* expected, double found) {
    throw UsageError(std::string(name) + ": expected " + expected + ", found " + numberText(found));
}

inline void checkFinite(const char* name, double value) {
    if (!std::isfinite(value)) refuse(name, "a finite number", value);
}

/// Prints one number: as @p text with it behind, or as JSON under @p key.
template <class T>
int print(Context& context, const char* key, const char* text, T number) {
    if (context.json)
        printJson(*context.out, {{key, jsonNumber(number)}});
    else
        *context.out << text << numberText(number) << '\n';
    return kDone;
}

}  // namespace rb::cli
