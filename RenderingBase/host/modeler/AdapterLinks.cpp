#include "RenderingBase/host/modeler/AdapterLinks.h"

#include <memory>

namespace {

// Stands for the count of an object that is being destroyed. Its destructor and those of its data
// extensions may take and give back references on it, which must not bring the count to 0 again.
constexpr unsigned kDyingCount = 1U << 30;
constexpr unsigned kSmallestDyingCount = 1U << 29;

}  // namespace

std::mutex& AdapterLinks::mutex() {
    static auto& mutex =
        *new std::mutex;  // never destroyed: objects may outlive the static objects
    return mutex;
}

bool AdapterLinks::isDying(const KVRBaseUnknown& object) {
    return object.m_count.load() >= kSmallestDyingCount;
}

KVRBaseUnknown* AdapterLinks::find(KVRBaseUnknown& object, const KVRExtensionBinding& binding) {
    for (const auto& link : object.m_links) {
        // The creator counts too: a tie asked for by its own creation function is of that class,
        // whatever other adapter serves the interface.
        if (link.iidName != binding.iid.name || link.make != binding.make) continue;
        link.adapter->AddRef();
        return link.adapter;
    }
    return nullptr;
}

KVRBaseUnknown* AdapterLinks::findOrMake(KVRBaseUnknown& object,
                                         const KVRExtensionBinding& binding) {
    {
        const std::scoped_lock lock(mutex());
        if (KVRBaseUnknown* known = find(object, binding)) return known;
        if (isDying(object)) return nullptr;
    }
    std::unique_ptr<KVRBaseUnknown> made(
        binding.make());  // destroyed when another thread was first
    if (!made) return nullptr;
    const std::scoped_lock lock(mutex());
    if (KVRBaseUnknown* known = find(object, binding)) return known;
    object.m_links.push_back({made.get(), binding.iid.name, binding.make});
    made->m_extended = &object;
    made->m_isDataExtension = binding.kind == KVRExtensionKind::Data;
    object.AddRef();  // a tie's hold on its object, or the caller's hold on the data extension
    return made.release();
}

unsigned AdapterLinks::decrement(const KVRBaseUnknown& counted) noexcept {
    if (!counted.isTie()) return --counted.m_count;
    for (unsigned count = counted.m_count.load(); count > 1;) {
        if (counted.m_count.compare_exchange_weak(count, count - 1)) return count - 1;
    }
    // Perhaps the last one: the tie must leave its object in the same step, or another thread could
    // find it again between its last release and its destruction.
    const std::scoped_lock lock(mutex());
    const unsigned left = --counted.m_count;
    if (left == 0) {
        std::erase_if(counted.m_extended->m_links,
                      [&](const auto& link) { return link.adapter == &counted; });
    }
    return left;
}

KVRBaseUnknown* AdapterLinks::takeLast(const KVRBaseUnknown& object) noexcept {
    const std::scoped_lock lock(mutex());
    for (auto at = object.m_links.rbegin(); at != object.m_links.rend(); ++at) {
        if (!at->adapter->m_isDataExtension) continue;
        KVRBaseUnknown* adapter = at->adapter;
        object.m_links.erase(std::next(at).base());
        return adapter;
    }
    return nullptr;
}

void AdapterLinks::beginDestruction(const KVRBaseUnknown& object) noexcept {
    if (isDying(object)) return;
    object.m_count.store(kDyingCount);
    if (object.m_links.empty()) return;  // nobody else can reach the object any more
    while (const KVRBaseUnknown* extension = takeLast(object)) delete extension;
}
