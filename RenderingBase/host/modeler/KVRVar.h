#pragma once

#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/base/KVRNullHandleError.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"

#include <concepts>
#include <utility>

/// A counted handle: holds one reference on an object, or nothing.
///
///     KVRVar<KVRPixelImage> image(borrowed);                                 // adds a reference
///     auto own = KVRVar<KVRPixelImage>::Adopt(new KVRPixelImage(...));       // takes the maker's
///
/// Threads: as a plain pointer; several handles of one object may be used at once.
template <class T>
class KVRVar {
public:
    KVRVar() = default;
    KVRVar(T* object) : m_object(object) {
        if (m_object) m_object->AddRef();
    }
    KVRVar(const KVRVar& other) : KVRVar(other.m_object) {}
    KVRVar(KVRVar&& other) noexcept : m_object(other.Detach()) {}
    template <class Other>
    requires std::convertible_to<Other*, T*> KVRVar(const KVRVar<Other>& other)
        : KVRVar(static_cast<T*>(other.Get())) {}
    KVRVar& operator=(KVRVar other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~KVRVar() {
        if (m_object) m_object->Release();
    }

    /// Takes over a reference that the caller holds.
    static KVRVar Adopt(T* object) {
        KVRVar handle;
        handle.m_object = object;
        return handle;
    }
    /// Hands the reference over to the caller and holds nothing afterwards.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(m_object, nullptr); }
    void Reset() { *this = KVRVar(); }

    /// The object, which stays the handle's; null when the handle holds nothing.
    T* Get() const { return m_object; }
    /// @throws KVRNullHandleError when the handle holds nothing.
    T* operator->() const {
        if (!m_object) throw KVRNullHandleError();
        return m_object;
    }
    explicit operator bool() const { return m_object != nullptr; }

    /// Compares the pointers; KVRIsEqual() compares the objects behind adapters.
    friend bool operator==(const KVRVar& a, const KVRVar& b) { return a.m_object == b.m_object; }

private:
    T* m_object = nullptr;
};

using KVRListOfPointers = KVRList<KVRBaseUnknown*>;        ///< References are counted by hand.
using KVRListOfHandles = KVRList<KVRVar<KVRBaseUnknown>>;  ///< Holds a reference on each member.
