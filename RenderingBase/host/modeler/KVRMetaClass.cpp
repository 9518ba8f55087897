#include "RenderingBase/host/modeler/KVRMetaClass.h"

#include "RenderingBase/host/modeler/KVRBaseUnknown.h"

#include <map>
#include <mutex>

/// Every type by its name. Its lock is a leaf: nothing else is locked or called while it is held,
/// so that a type may be declared (which happens inside the initialisation of a static object)
/// under any other lock.
class MetaClassTable {
public:
    /// Never destroyed, nor are the types in it: objects may outlive the static objects.
    static MetaClassTable& instance() {
        static auto& table = *new MetaClassTable;
        return table;
    }

    const KVRMetaClass& declare(std::string_view name, const KVRMetaClass* base) {
        const std::scoped_lock lock(m_mutex);
        const KVRMetaClass* known = find(name);  // another library may have a copy of the class
        if (known && known->m_base.load() == base) return *known;
        const auto* type = new KVRMetaClass(name, base, {});
        m_types.emplace(type->GetName(), type);
        return *type;
    }

    const KVRMetaClass& define(std::string_view name, std::string_view base) {
        const std::scoped_lock lock(m_mutex);
        if (const auto* known = find(name)) return *known;
        if (base.empty() || derives(base, name)) base = kRoot;
        const auto* type = new KVRMetaClass(name, find(base), base);
        m_types.emplace(type->GetName(), type);
        return *type;
    }

    const KVRMetaClass* lockedFind(std::string_view name) {
        const std::scoped_lock lock(m_mutex);
        return find(name);
    }

private:
    static constexpr std::string_view kRoot = "KVRBaseUnknown";

    const KVRMetaClass* find(std::string_view name) const {
        const auto at = m_types.find(name);
        return at == m_types.end() ? nullptr : at->second;
    }

    /// Whether a type derives from a name that is about to be defined. The names of bases count,
    /// known or not, since a base that is missing today may be this very name.
    bool derives(std::string_view type, std::string_view name) const {
        while (type != name) {
            const KVRMetaClass* known = find(type);
            if (!known) return false;
            const KVRMetaClass* base = known->m_base.load();
            type = base ? std::string_view(base->m_name) : std::string_view(known->m_baseName);
        }
        return true;
    }

    std::mutex m_mutex;
    std::map<std::string, const KVRMetaClass*, std::less<>> m_types;
};

const KVRMetaClass& KVRMetaClass::Declare(std::string_view name, const KVRMetaClass* base) {
    return MetaClassTable::instance().declare(name, base);
}

const KVRMetaClass& KVRMetaClass::Define(std::string_view name, std::string_view base) {
    KVRBaseUnknown::MetaObject();  // the root is always there
    return MetaClassTable::instance().define(name, base);
}

const KVRMetaClass* KVRMetaClass::Find(std::string_view name) {
    return MetaClassTable::instance().lockedFind(name);
}

const KVRMetaClass* KVRMetaClass::GetBase() const {
    const KVRMetaClass* base = m_base.load();
    if (!base && !m_baseName.empty()) {
        base = Find(m_baseName);
        m_base.store(base);
    }
    return base;
}

bool KVRMetaClass::IsAKindOf(std::string_view name) const {
    for (const KVRMetaClass* type = this; type; type = type->GetBase()) {
        if (type->m_name == name) return true;
    }
    return false;
}
