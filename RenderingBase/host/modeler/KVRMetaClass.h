#pragma once

/// @file  The tree of types by name: one node for every class of the framework, and for every type
/// that is known by its name only (document types, types of features read from catalogs).
///
///     KVRMetaClass::Define("PCCMemDocument", "KVRPlmComponent");
///     if (object->GetMetaObject().IsAKindOf("KVRPlmComponent")) ...

#include "RenderingBase/host/base/KVRExport.h"

#include <atomic>
#include <string>
#include <string_view>

/// A type: its name and the type it derives from.
///
/// Lifetime: nodes are never destroyed, so a pointer to one is always good.
/// Threads: all members may be called at once.
class KVR_EXPORT KVRMetaClass {
public:
    /// The node of a C++ class, which KVRClass makes when the library of the class is loaded. The
    /// first node of a name is the one that Find() returns.
    /// @param base  the node of the base class; null for the root of the tree.
    static const KVRMetaClass& Declare(std::string_view name, const KVRMetaClass* base);

    /// Returns the type of this name, and makes it when there is none.
    ///
    /// The base of a type that exists already is not changed. A base that is not known yet is
    /// looked up by its name whenever it is needed, until it is. An empty base, or one that derives
    /// from the new type itself, makes the type derive from "KVRBaseUnknown".
    static const KVRMetaClass& Define(std::string_view name, std::string_view base);

    /// Returns the type of this name, null when there is none.
    static const KVRMetaClass* Find(std::string_view name);

    KVRMetaClass(const KVRMetaClass&) = delete;
    KVRMetaClass& operator=(const KVRMetaClass&) = delete;

    const char* GetName() const { return m_name.c_str(); }

    /// Returns the type that this one derives from; null for the root, and as long as the base of a
    /// type made by Define() is not known.
    const KVRMetaClass* GetBase() const;

    /// Tells whether this type is the named one or derives from it.
    bool IsAKindOf(std::string_view name) const;
    bool IsAKindOf(const char* name) const { return name && IsAKindOf(std::string_view(name)); }
    bool IsAKindOf(const KVRMetaClass& other) const { return IsAKindOf(other.m_name); }

private:
    friend class MetaClassTable;
    KVRMetaClass(std::string_view name, const KVRMetaClass* base, std::string_view baseName)
        : m_name(name), m_base(base), m_baseName(baseName) {}

    std::string m_name;
    mutable std::atomic<const KVRMetaClass*> m_base;
    std::string m_baseName;  // of a base that may be defined later, else empty
};
