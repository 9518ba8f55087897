#pragma once

/// @file  The base of every counted object of the framework. Classes derive from it through
/// KVRClass and KVRInterface (KVRClass.h); handles that count by themselves are in KVRVar.h.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/modeler/KVRIid.h"
#include "RenderingBase/host/modeler/KVRMetaClass.h"

#include <atomic>
#include <vector>

/// An object that is counted, knows its type, and answers interfaces.
///
/// Lifetime: a new object has the count 1, which belongs to whoever made it; the last Release()
/// destroys it. An object may be extended by adapters (see KVRModeler), and all of them are one
/// object to the outside: any of them answers the interfaces of all, and they compare equal.
///
///   adapter         made on                  lives              counted
///   tie             a query, when none is    with its pointers  by itself; holds its object
///   data extension  the first query, once    with its object    as its object
///
/// When the count of an object reaches 0, its data extensions are destroyed first, the last made
/// first, while the object is still whole: their destructors may use it. Nothing new extends it
/// from then on. An object that is not counted down (one on the stack) loses them in the destructor
/// of this base class, when the parts derived from it are gone already; nobody may hold a reference
/// on it any more.
/// Threads: AddRef, Release and QueryInterface may be called at once by whoever holds a reference.
class KVR_EXPORT KVRBaseUnknown {
public:
    KVRBaseUnknown() = default;
    KVRBaseUnknown(const KVRBaseUnknown&) noexcept {}  ///< A copy is a new object with the count 1.
    /// The count, and what extends the object, are not assigned.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    KVRBaseUnknown& operator=(const KVRBaseUnknown&) noexcept { return *this; }
    virtual ~KVRBaseUnknown();

    /// Returns the new count, which other threads may have changed by then.
    unsigned AddRef() const noexcept;
    unsigned Release() const noexcept;

    /// Finds an interface of this object: its own, else that of an adapter, which is made when
    /// needed.
    /// @param out  cleared first; gets the interface with one reference for the caller.
    /// Errors: E_NOINTERFACE when nothing answers; E_INVALIDARG when @p out is null; E_OUTOFMEMORY
    ///         or E_FAIL when the adapter could not be made.
    HRESULT QueryInterface(const KVRIid& iid, void** out);

    static const char* ClassId() { return "KVRBaseUnknown"; }
    static const KVRMetaClass& MetaObject();
    virtual const KVRMetaClass& GetMetaObject() const { return MetaObject(); }
    /// The name of the object's class; of an adapter, its own.
    const char* IsA() const { return GetMetaObject().GetName(); }
    /// 1 when the class is the named one or derives from it, else 0.
    int IsAKindOf(const char* type) const { return GetMetaObject().IsAKindOf(type) ? 1 : 0; }

    /// The object that an adapter extends; any other object itself. Not counted.
    KVRBaseUnknown* GetImpl() const {
        return m_extended ? m_extended : const_cast<KVRBaseUnknown*>(this);
    }

    /// 1 when both stand for one object, as KVRIsEqual.
    int equal_to(const KVRBaseUnknown& other) const { return GetImpl() == other.GetImpl() ? 1 : 0; }

private:
    friend class AdapterLinks;
    struct Link {
        KVRBaseUnknown* adapter;
        std::string_view iidName;
        KVRBaseUnknown* (*make)();
    };

    const KVRBaseUnknown& counted() const { return m_isDataExtension ? *m_extended : *this; }
    bool isTie() const { return m_extended && !m_isDataExtension; }

    mutable std::atomic<unsigned> m_count{1};
    bool m_isDataExtension = false;
    KVRBaseUnknown* m_extended = nullptr;  // set once, before anybody else knows the adapter
    mutable std::vector<Link> m_links;     // the adapters, under the lock of AdapterLinks
};

/// Tells whether two pointers stand for one object, also through its adapters. Null equals nothing.
inline bool KVRIsEqual(const KVRBaseUnknown* a, const KVRBaseUnknown* b) {
    return a && b && a->GetImpl() == b->GetImpl();
}
