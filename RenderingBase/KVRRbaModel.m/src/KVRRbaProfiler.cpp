#include "RenderingBase/public/KVRRbaProfiler.h"

#include "RenderingBase/KVRRbaModel.m/src/kernels/CounterTime.h"
#include "RenderingBase/host/base/KVREnvironment.h"

#include <chrono>
#include <new>
#include <sstream>
#include <string>

namespace {

constexpr double kMicrosecondsToTheMillisecond = 1000.0;

std::int64_t nowNs() {
    using Clock = std::chrono::steady_clock;
    constexpr std::int64_t kFrequency = Clock::period::den / Clock::period::num;
    return rb::kernels::nanosecondsOfCounter(Clock::now().time_since_epoch().count(), kFrequency);
}

bool keepsSamples() {
    static const bool isDefined = KVRGetEnv("KVRRbaProfilerKeepAllSamples") != nullptr;
    return isDefined;
}

std::uint32_t idOf(const char* name) { return KVRRbaProfiler::Id(name).Value(); }

/// Lack of memory must not end the program that is measured: its measure is lost then.
template <class Work>
void record(Work work) noexcept {
    try {
        work();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

KVRRbaProfiler::KVRRbaProfiler() noexcept {
    const char* const groups = KVRGetEnv("KVRRbaProfilerActiveGroups");
    if (!groups) return;
    record([&] {
        std::istringstream names{groups};
        for (std::string name; std::getline(names, name, ',');) {
            if (!name.empty()) SetActive(name.c_str(), true);
        }
    });
}

KVRRbaProfiler& KVRRbaProfiler::GetInstance() noexcept {
    static KVRRbaProfiler profiler;
    return profiler;
}

KVRRbaProfiler::Group* KVRRbaProfiler::FindGroup(std::uint32_t group) noexcept {
    const auto found = m_groups.find(group);
    return found == m_groups.end() ? nullptr : &found->second;
}

KVRRbaProfiler::Group* KVRRbaProfiler::FindGroup(const char* group) noexcept {
    // Most programs are not measured: their names are not even hashed.
    return m_groups.empty() ? nullptr : FindGroup(idOf(group));
}

const KVRRbaProfiler::Timer* KVRRbaProfiler::GetTimer(std::uint32_t group,
                                                      std::uint32_t timer) const noexcept {
    const auto timers = m_groups.find(group);
    if (timers == m_groups.end()) return nullptr;
    const auto found = timers->second.find(timer);
    return found == timers->second.end() ? nullptr : &found->second;
}

void KVRRbaProfiler::SetActive(const char* group, bool on) noexcept {
    if (on)
        record([&] { m_groups.try_emplace(idOf(group)); });
    else
        m_groups.erase(idOf(group));
}

bool KVRRbaProfiler::IsActive(const char* group) const noexcept { return IsActive(idOf(group)); }

bool KVRRbaProfiler::IsActive(std::uint32_t group) const noexcept {
    return m_groups.contains(group);
}

// The names of timers are hashed in active groups only.

void KVRRbaProfiler::Resume(const char* group, const char* timer) noexcept {
    if (Group* const timers = FindGroup(group)) Start(*timers, idOf(timer));
}

void KVRRbaProfiler::Resume(std::uint32_t group, std::uint32_t timer) noexcept {
    if (Group* const timers = FindGroup(group)) Start(*timers, timer);
}

void KVRRbaProfiler::Pause(const char* group, const char* timer) noexcept {
    if (Group* const timers = FindGroup(group)) Stop(*timers, idOf(timer));
}

void KVRRbaProfiler::Pause(std::uint32_t group, std::uint32_t timer) noexcept {
    if (Group* const timers = FindGroup(group)) Stop(*timers, timer);
}

void KVRRbaProfiler::Start(Group& timers, std::uint32_t timer) noexcept {
    record([&] {
        Timer& started = timers[timer];
        started.startNs = nowNs();  // last, so that the search is not measured
    });
}

void KVRRbaProfiler::Stop(Group& timers, std::uint32_t timer) noexcept {
    const std::int64_t endNs = nowNs();  // first, for the same reason
    record([&] {
        Timer& stopped = timers[timer];
        const std::int64_t durationUs = rb::kernels::microsecondsBetween(stopped.startNs, endNs);
        // First what may fail, so that a measure is kept as a whole or not at all.
        if (keepsSamples()) stopped.samplesUs.push_back(durationUs);
        stopped.accumulatedUs += durationUs;
        ++stopped.hitCount;
    });
}

void KVRRbaProfiler::Reset(const char* group, const char* timer) noexcept {
    Group* const timers = FindGroup(group);
    if (!timers) return;
    record([&] { (*timers)[idOf(timer)] = {}; });
}

void KVRRbaProfiler::ResetAll(const char* group) noexcept {
    if (Group* const timers = FindGroup(group)) timers->clear();
}

void KVRRbaProfiler::ResetAll() noexcept {
    for (auto& [id, timers] : m_groups) timers.clear();
}

double KVRRbaProfiler::GetAccumulatedMS(const char* group, const char* timer) const noexcept {
    const Timer* const found = GetTimer(idOf(group), idOf(timer));
    return found ? static_cast<double>(found->accumulatedUs) / kMicrosecondsToTheMillisecond : 0.0;
}

std::vector<double> KVRRbaProfiler::GetAllMeasuresMS(const char* group,
                                                     const char* timer) const noexcept {
    std::vector<double> measuresMs;
    const Timer* const found = GetTimer(idOf(group), idOf(timer));
    if (!found) return measuresMs;
    record([&] {
        measuresMs.reserve(found->samplesUs.size());
        for (const std::int64_t sampleUs : found->samplesUs)
            measuresMs.push_back(static_cast<double>(sampleUs) / kMicrosecondsToTheMillisecond);
    });
    return measuresMs;
}

int KVRRbaProfiler::GetHitCount(const char* group, const char* timer) const noexcept {
    const Timer* const found = GetTimer(idOf(group), idOf(timer));
    return found ? static_cast<int>(found->hitCount) : 0;
}
