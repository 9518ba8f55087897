#include "RenderingBase/host/base/KVRExitCallback.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Callback = int (*)(int);

class ExitCallbacks {
public:
    /// Never destroyed: static objects may still register while the process ends.
    static ExitCallbacks& instance() {
        static auto& callbacks = *new ExitCallbacks;
        return callbacks;
    }

    void add(Callback callback, int phase) {
        const std::scoped_lock lock(m_mutex);
        m_byPhase[phase].push_back(callback);
        if (std::exchange(m_hooked, true)) return;
        std::atexit([] { instance().runAll(); });
    }

private:
    /// Each function is taken out before it is called, so that it may register others.
    void runAll() {
        for (auto [callback, phase] = takeNext(); callback;
             std::tie(callback, phase) = takeNext()) {
            callback(phase);
        }
    }

    std::pair<Callback, int> takeNext() {
        const std::scoped_lock lock(m_mutex);
        if (m_byPhase.empty()) {
            m_hooked = false;  // a later registration needs a hook of its own
            return {nullptr, 0};
        }
        const auto first = m_byPhase.begin();
        const std::pair<Callback, int> next{first->second.back(), first->first};
        first->second.pop_back();
        if (first->second.empty()) m_byPhase.erase(first);
        return next;
    }

    std::mutex m_mutex;
    std::map<int, std::vector<Callback>> m_byPhase;
    bool m_hooked = false;
};

}  // namespace

void KVRRegisterExitCallback(int (*callback)(int), int phase) {
    if (callback) ExitCallbacks::instance().add(callback, phase);
}
