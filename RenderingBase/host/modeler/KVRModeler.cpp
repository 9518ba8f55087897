#include "RenderingBase/host/modeler/KVRModeler.h"

#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/modeler/AdapterLinks.h"

#include <map>
#include <optional>
#include <string>

namespace {

/// What has been registered. The lock is a leaf: nothing else is locked or called while it is held.
class Registry {
public:
    /// Never destroyed: components may be asked for while the static objects go.
    static Registry& instance() {
        static auto& registry = *new Registry;
        return registry;
    }

    void add(const KVRExtensionBinding& binding, std::initializer_list<const char*> types) {
        const std::scoped_lock lock(m_mutex);
        for (const char* type : types) m_bindings.emplace(type, binding);
    }

    void add(const char* component, KVRCreator make) {
        const std::scoped_lock lock(m_mutex);
        m_components.emplace(component, make);
    }

    std::optional<KVRExtensionBinding> binding(std::string_view type, const KVRIid& iid) {
        const std::scoped_lock lock(m_mutex);
        for (auto [at, end] = m_bindings.equal_range(type); at != end; ++at) {
            if (at->second.iid == iid) return at->second;
        }
        return {};
    }

    KVRCreator component(std::string_view name) {
        const std::scoped_lock lock(m_mutex);
        const auto at = m_components.find(name);
        return at == m_components.end() ? nullptr : at->second;
    }

private:
    std::mutex m_mutex;
    std::multimap<std::string, KVRExtensionBinding, std::less<>> m_bindings;
    std::map<std::string, KVRCreator, std::less<>> m_components;
};

}  // namespace

std::recursive_mutex& KVRModeler::Guard() {
    static auto& guard = *new std::recursive_mutex;  // never destroyed, as the registry
    return guard;
}

void KVRModeler::BindExtension(const KVRExtensionBinding& binding,
                               std::initializer_list<const char*> types) {
    const std::scoped_lock guard(Guard());
    Registry::instance().add(binding, types);
}

void KVRModeler::BindComponent(const char* name, KVRCreator make) {
    const std::scoped_lock guard(Guard());
    Registry::instance().add(name, make);
}

KVRBaseUnknown* KVRModeler::Create(std::string_view component) {
    const KVRCreator make = Registry::instance().component(component);
    return make ? make() : nullptr;
}

KVRBaseUnknown* KVRModeler::Extend(KVRBaseUnknown& object, const KVRIid& iid) {
    KVRBaseUnknown& extended = *object.GetImpl();
    for (const auto* type = &extended.GetMetaObject(); type; type = type->GetBase()) {
        const auto binding = Registry::instance().binding(type->GetName(), iid);
        if (binding) return AdapterLinks::findOrMake(extended, *binding);
    }
    return nullptr;
}

KVRBaseUnknown* KVRModeler::Extend(KVRBaseUnknown& object, const KVRExtensionBinding& binding) {
    return AdapterLinks::findOrMake(*object.GetImpl(), binding);
}

HRESULT KVRInstantiateComponent(const char* name, const KVRIid& iid, void** out) {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (!name) return E_INVALIDARG;
    return rb::guarded([&] {
        const auto made = KVRVar<KVRBaseUnknown>::Adopt(KVRModeler::Create(name));
        const HRESULT status = made ? made->QueryInterface(iid, out) : E_FAIL;
        return status == E_NOINTERFACE ? E_FAIL : status;
    });
}
