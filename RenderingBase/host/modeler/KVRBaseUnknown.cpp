#include "RenderingBase/host/modeler/KVRBaseUnknown.h"

#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/modeler/AdapterLinks.h"

const KVRMetaClass& KVRBaseUnknown::MetaObject() {
    static const KVRMetaClass& meta = KVRMetaClass::Declare("KVRBaseUnknown", nullptr);
    return meta;
}

KVRBaseUnknown::~KVRBaseUnknown() {
    AdapterLinks::beginDestruction(*this);
    if (isTie()) m_extended->Release();
}

unsigned KVRBaseUnknown::AddRef() const noexcept { return ++counted().m_count; }

unsigned KVRBaseUnknown::Release() const noexcept {
    const KVRBaseUnknown& object = counted();
    const unsigned left = AdapterLinks::decrement(object);
    if (left == 0) {
        AdapterLinks::beginDestruction(object);
        delete &object;
    }
    return left;
}

HRESULT KVRBaseUnknown::QueryInterface(const KVRIid& iid, void** out) {
    if (!out) return E_INVALIDARG;
    KVRBaseUnknown* self = GetImpl();
    *out = iid.fromObject(self);
    if (*out) {
        self->AddRef();
        return S_OK;
    }
    return rb::guarded([&] {
        KVRBaseUnknown* adapter = KVRModeler::Extend(*self, iid);
        if (!adapter) return E_NOINTERFACE;
        *out = iid.fromObject(adapter);
        if (!*out) adapter->Release();
        return *out ? S_OK : E_NOINTERFACE;
    });
}
