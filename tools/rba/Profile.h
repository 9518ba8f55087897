#pragma once

/// @file  How long the calls of the library take that a command makes. Each is a section of the
/// library's profiler: the group has the name of the class, the timer that of the operation.
///
///     const int kind = measured("KVRRbaImageServices", "CheckDDSFormat",
///                               [&] { return KVRRbaImageServices::CheckDDSFormat(path); });
///
/// The profiler takes no locks, so this is for the main thread only.

#include "RenderingBase/public/KVRRbaProfiler.h"

#include <ostream>
#include <vector>

namespace rb::cli {

/// From now on calls are measured, whatever groups the environment switches on.
void startProfile();

/// Enters a section into the profile, if one has been started. @return  The group.
const char* enlisted(const char* group, const char* timer);

/// Makes a call, as a section. @param group, timer  Literals.
template <class Call>
auto measured(const char* group, const char* timer, Call call) {
    const KVRRbaProfiler::Probe probe(enlisted(group, timer), timer);
    return call();
}

struct ProfileRow {
    const char* group;
    const char* timer;
    int hitCount;  ///< 1 at least.
    double accumulatedMs;
    std::vector<double> measuresMs;  ///< Empty unless the environment asks to keep them.

    double meanMs() const { return accumulatedMs / hitCount; }
};

/// What has been measured since startProfile(), the longest in all first.
std::vector<ProfileRow> profile();

/// Prints a table, or one JSON value.
void printProfile(std::ostream& out, bool json);

}  // namespace rb::cli
