#pragma once

/// @file  What a class of the framework derives from.
///
///     class KVR_EXPORT KVRIFoo : public KVRInterface<"KVRIFoo"> {  // an interface
///     public:
///         virtual HRESULT Count(unsigned& count) = 0;
///     };
///     class KVR_EXPORT KVR3DRep : public KVRClass<"KVR3DRep"> {};
///     class KVR_EXPORT KVR3DPipeRep : public KVRClass<"KVR3DPipeRep", KVR3DRep> {};
///     class PipeFoo : public KVRClass<"PipeFoo", KVRIFoo> { ... };  // implements KVRIFoo
///     ...
///     if (auto foo = KVRQuery<KVRIFoo>(object)) foo->Count(n);

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <algorithm>
#include <cstddef>

/// A name as a template argument.
template <std::size_t size>
struct KVR_EXPORT KVRName {
    char text[size];
    constexpr KVRName(const char (&literal)[size]) { std::copy_n(literal, size, text); }
};

/// The base of an interface. Interfaces derive virtually from KVRBaseUnknown: an object has one
/// count and one identity however many of them it implements.
template <KVRName name>
class KVR_EXPORT KVRInterface : public virtual KVRBaseUnknown {};

/// The base of a class: gives it its name in the tree of types, below that of @p Base, whose
/// constructors it inherits.
template <KVRName name, class Base = KVRBaseUnknown>
class KVR_EXPORT KVRClass : public Base {
public:
    using Base::Base;
    static const char* ClassId() { return name.text; }
    static const KVRMetaClass& MetaObject() {
        static const KVRMetaClass& meta = KVRMetaClass::Declare(name.text, &Base::MetaObject());
        return meta;
    }
    const KVRMetaClass& GetMetaObject() const override {
        static_cast<void>(&s_isDeclared);
        return MetaObject();
    }

private:
    // Declares the type when its library is loaded, so that types known by name only may derive
    // from a class of which no object has been made yet.
    static inline const bool s_isDeclared = (static_cast<void>(MetaObject()), true);
};

/// The same for a class without a base of its own, which derives virtually as the interfaces do.
template <KVRName name>
class KVR_EXPORT KVRClass<name, KVRBaseUnknown> : public virtual KVRBaseUnknown {
public:
    static const char* ClassId() { return name.text; }
    static const KVRMetaClass& MetaObject() {
        static const KVRMetaClass& meta =
            KVRMetaClass::Declare(name.text, &KVRBaseUnknown::MetaObject());
        return meta;
    }
    const KVRMetaClass& GetMetaObject() const override {
        static_cast<void>(&s_isDeclared);
        return MetaObject();
    }

private:
    static inline const bool s_isDeclared = (static_cast<void>(MetaObject()), true);
};

/// The name that an interface was given.
template <KVRName name>
constexpr std::string_view KVRInterfaceName(const KVRInterface<name>*) {
    return name.text;
}

/// The identifier of an interface.
template <class Interface>
const KVRIid& KVRIidOf() {
    static constexpr KVRIid iid{
        KVRInterfaceName(static_cast<const Interface*>(nullptr)),
        [](KVRBaseUnknown* object) -> void* { return dynamic_cast<Interface*>(object); }};
    return iid;
}

/// Finds an interface of an object. Returns an empty handle when the object is null or does not
/// answer.
template <class Interface>
KVRVar<Interface> KVRQuery(KVRBaseUnknown* object) {
    void* found = nullptr;
    if (object) object->QueryInterface(KVRIidOf<Interface>(), &found);
    return KVRVar<Interface>::Adopt(static_cast<Interface*>(found));
}

/// The same for the object of a handle.
template <class Interface, class T>
KVRVar<Interface> KVRQuery(const KVRVar<T>& object) {
    return KVRQuery<Interface>(object.Get());
}
