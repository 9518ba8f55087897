#pragma once

#include <string_view>

class KVRBaseUnknown;

/// An interface identifier: the name of the interface, and how to find the interface on an object.
///
/// Identifiers compare by name, so that every shared library may hold one of its own. They are made
/// by KVRIidOf<Interface>() and live as long as the library that made them.
struct KVRIid {
    std::string_view name;
    /// Returns the interface that the object implements itself, null when it does not.
    void* (*fromObject)(KVRBaseUnknown*);

    friend bool operator==(const KVRIid& a, const KVRIid& b) { return a.name == b.name; }
};
