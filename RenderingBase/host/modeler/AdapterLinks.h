#pragma once

#include "RenderingBase/host/modeler/KVRBaseUnknown.h"
#include "RenderingBase/host/modeler/KVRModeler.h"

#include <mutex>

/// The links between objects and their adapters.
///
/// One lock guards the links of all objects. It is a leaf: no constructor, destructor or other
/// foreign code runs while it is held.
class AdapterLinks {
public:
    /// Finds the adapter of an object again, or makes it. Returns it with one reference for the
    /// caller; null when the object is being destroyed or nothing was made. Passes on what the
    /// creator throws.
    static KVRBaseUnknown* findOrMake(KVRBaseUnknown& object, const KVRExtensionBinding& binding);

    /// Takes one reference from an object or a tie. Returns the references left.
    static unsigned decrement(const KVRBaseUnknown& counted) noexcept;

    /// Marks an object whose count has reached 0 and destroys its data extensions.
    static void beginDestruction(const KVRBaseUnknown& object) noexcept;

private:
    static std::mutex& mutex();
    static KVRBaseUnknown* find(KVRBaseUnknown& object, const KVRExtensionBinding& binding);
    static bool isDying(const KVRBaseUnknown& object);
    static KVRBaseUnknown* takeLast(const KVRBaseUnknown& object) noexcept;
};
