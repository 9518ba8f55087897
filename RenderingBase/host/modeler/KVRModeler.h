#pragma once

/// @file  The registry of components and adapters, and the macros that enter a class in it.
///
///     KVR_COMPONENT(KVRRbaFactory);
///     KVR_DECLARE_TIE(KVRIRbaGeometry, KVRRbaGeometryPipeRep);  // in a header
///     KVR_TIE(KVRIRbaGeometry, KVRRbaGeometryPipeRep, "KVR3DPipeRep");
///     KVR_DATA_EXTENSION(KVRICached, DocumentImage, "PCCMemDocument", "PCCMemDOCUMENTS");
///
/// The other macros stand in the source of the class, at namespace scope, and register when the
/// library is loaded; a library that uses them must therefore be a shared one, and stays loaded
/// until the process ends. KVRBaseUnknown.h tells how the two kinds of adapters live.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"
#include "RenderingBase/host/modeler/KVRClass.h"

#include <initializer_list>
#include <mutex>
#include <string_view>

enum class KVRExtensionKind {
    Tie,   ///< Lives with the pointers to it.
    Data,  ///< Lives with its object, one per object.
};

/// Makes an object with the count 1. Adapters are made with no lock held, before they are bound to
/// their object; two threads that ask at once may both make one, and one of the two is destroyed
/// unused.
using KVRCreator = KVRBaseUnknown* (*)();

/// What serves an interface on the objects of a type.
struct KVRExtensionBinding {
    KVRIid iid;
    KVRExtensionKind kind;
    KVRCreator make;
};

/// Threads: all members may be called at once.
class KVR_EXPORT KVRModeler {
public:
    /// Registers an adapter for objects of the named types and of types derived from them. The
    /// nearest type wins, and for one type the first registration.
    static void BindExtension(const KVRExtensionBinding& binding,
                              std::initializer_list<const char*> types);

    /// Registers a component; of several with one name, the first stays.
    static void BindComponent(const char* name, KVRCreator make);

    /// Makes a component, null when the name is unknown. Passes on what the creator throws.
    static KVRBaseUnknown* Create(std::string_view component);

    /// Finds the adapter that serves an interface on an object, or makes it.
    /// @return with one reference for the caller; null when none is registered, or while the object
    ///         is being destroyed. Passes on what the creator throws.
    static KVRBaseUnknown* Extend(KVRBaseUnknown& object, const KVRIid& iid);

    /// The same with a given adapter, whatever is registered for the object's type.
    static KVRBaseUnknown* Extend(KVRBaseUnknown& object, const KVRExtensionBinding& binding);

    /// The guard of registrations: whoever holds it sees no registration half done. Finding and
    /// making components and adapters does not take it.
    static std::recursive_mutex& Guard();
};

/// Makes a component and finds an interface on it.
/// @param out  cleared first; gets the interface with one reference for the caller.
/// Errors: E_FAIL for an unknown name, and when the component does not answer or cannot be made;
///         E_INVALIDARG when @p name or @p out is null; E_OUTOFMEMORY.
KVR_EXPORT HRESULT KVRInstantiateComponent(const char* name, const KVRIid& iid, void** out);

template <class T>
KVRBaseUnknown* KVRMake() {
    return new T;
}

struct KVRComponentRegistration {
    KVRComponentRegistration(const char* name, KVRCreator make) {
        KVRModeler::BindComponent(name, make);
    }
};

struct KVRExtensionRegistration {
    KVRExtensionRegistration(const KVRExtensionBinding& binding,
                             std::initializer_list<const char*> types) {
        KVRModeler::BindExtension(binding, types);
    }
};

/// Makes the class @p Class a component under its own name.
#define KVR_COMPONENT(Class) \
    static const KVRComponentRegistration registerComponent##Class(#Class, &KVRMake<Class>)

/// Makes @p Class the data extension that serves @p Interface on the types named after it.
#define KVR_DATA_EXTENSION(Interface, Class, ...)                         \
    static const KVRExtensionRegistration registerData##Interface##Class( \
        {KVRIidOf<Interface>(), KVRExtensionKind::Data, &KVRMake<Class>}, {__VA_ARGS__})

/// Declares what KVR_TIE defines: the tie class, and the creation function. Stands in a header, or
/// before KVR_TIE.
#define KVR_DECLARE_TIE(Interface, Class)                                                      \
    extern "C" KVR_EXPORT KVRBaseUnknown* CreateTIE##Interface##Class(KVRBaseUnknown* object); \
    struct KVR_EXPORT TIE##Interface##Class {                                                  \
        static const KVRMetaClass& MetaObject();                                               \
    }

/// Makes @p Class the tie that serves @p Interface on the types named after it. Defines
/// `TIE<Interface><Class>::MetaObject`, and `CreateTIE<Interface><Class>`, which ties any object to
/// this class: one reference for the caller, null for a null object or when it cannot be made.
#define KVR_TIE(Interface, Class, ...)                                                            \
    KVRBaseUnknown* CreateTIE##Interface##Class(KVRBaseUnknown* object) {                         \
        try {                                                                                     \
            return object ? KVRModeler::Extend(*object, {KVRIidOf<Interface>(),                   \
                                                         KVRExtensionKind::Tie, &KVRMake<Class>}) \
                          : nullptr;                                                              \
        } catch (...) {                                                                           \
            return nullptr;                                                                       \
        }                                                                                         \
    }                                                                                             \
    const KVRMetaClass& TIE##Interface##Class::MetaObject() { return Class::MetaObject(); }       \
    static const KVRExtensionRegistration registerTie##Interface##Class(                          \
        {KVRIidOf<Interface>(), KVRExtensionKind::Tie, &KVRMake<Class>}, {__VA_ARGS__})
