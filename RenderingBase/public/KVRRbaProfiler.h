#pragma once

/// @file  Measures how long named sections of code take, in groups that are switched on by name.
///
///     void loadAll() {
///         const KVRRbaProfiler::Probe probe("Loading", "all files");
///         ...
///     }
///
///     KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
///     profiler.SetActive("Loading", true);
///     loadAll();
///     const double milliseconds = profiler.GetAccumulatedMS("Loading", "all files");
///
/// The environment variable KVRRbaProfilerActiveGroups, a list of names with "," between them,
/// switches groups on at the start.

#include "RenderingBase/host/base/KVRExport.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <unordered_map>
#include <vector>

/// Wall-clock time of sections. The process has one profiler, which lives from its first use to the
/// end of the process; copies are snapshots, and nothing is measured in them unless they are asked
/// to.
///
/// Names are texts that end in a zero byte, never null. Only their hash is kept: two names with
/// equal hashes share a group or a timer.
/// Units: milliseconds; each single duration is cut to whole microseconds.
/// Inactive groups cost a look into a hash map, no memory, and no reading of the clock.
/// Errors: nothing throws, except copies, for lack of memory. What finds no memory is not recorded.
/// Threads: GetInstance any. Nothing else is locked, neither are probes: callers that measure on
/// several threads take turns.
class KVR_EXPORT KVRRbaProfiler {
public:
    class Id;
    class Probe;

    /// Made on first use, with the groups of KVRRbaProfilerActiveGroups active. Empty names between
    /// commas are skipped; blanks belong to the names.
    static KVRRbaProfiler& GetInstance() noexcept;

    /// Switches a group on, with no timers unless it is on already, or off, and forgets its timers.
    void SetActive(const char* group, bool on) noexcept;
    bool IsActive(const char* group) const noexcept;

    /// Starts the section, or starts it anew: a timer has one start.
    void Resume(const char* group, const char* timer) noexcept;

    /// Adds the time since the last Resume, and counts a hit. Without a Resume the time since the
    /// origin of the clock is added; kept for compatibility. The start stays: a second Pause counts
    /// from the same one.
    void Pause(const char* group, const char* timer) noexcept;

    /// Sets a timer to zero as if it were new, and makes one where there is none.
    void Reset(const char* group, const char* timer) noexcept;
    void ResetAll(const char* group) noexcept;  ///< Forgets the timers of a group.
    void ResetAll() noexcept;  ///< Forgets the timers of all groups, which stay active.

    /// All durations together, in milliseconds; 0 for an inactive group or an unknown timer.
    double GetAccumulatedMS(const char* group, const char* timer) const noexcept;
    /// Each duration in milliseconds, oldest first, when they are kept: when the environment
    /// variable KVRRbaProfilerKeepAllSamples was defined at the first Pause of an active group in
    /// this process. Empty for an inactive group or an unknown timer, and without memory.
    std::vector<double> GetAllMeasuresMS(const char* group, const char* timer) const noexcept;
    /// How often Pause was called; 0 for an inactive group or an unknown timer.
    int GetHitCount(const char* group, const char* timer) const noexcept;

private:
    struct Timer {
        std::int64_t startNs = 0;  // of the steady clock; 0 before the first Resume
        std::int64_t accumulatedUs = 0;
        std::uint32_t hitCount = 0;
        std::vector<std::int64_t> samplesUs;
    };
    using Group = std::unordered_map<std::uint32_t, Timer>;

    KVRRbaProfiler() noexcept;

    bool IsActive(std::uint32_t group) const noexcept;
    void Resume(std::uint32_t group, std::uint32_t timer) noexcept;
    void Pause(std::uint32_t group, std::uint32_t timer) noexcept;
    const Timer* GetTimer(std::uint32_t group, std::uint32_t timer) const noexcept;
    Group* FindGroup(std::uint32_t group) noexcept;  // null when it is not active
    Group* FindGroup(const char* group) noexcept;
    static void Start(Group& timers, std::uint32_t timer) noexcept;
    static void Stop(Group& timers, std::uint32_t timer) noexcept;

    std::unordered_map<std::uint32_t, Group> m_groups;  // the active ones
};

/// What the profiler keeps of a name: its hash. Names that are literals, or arrays declared
/// `constexpr`, are hashed when the program is compiled. An array that is `const` only does not
/// compile: hand over a pointer to it.
class KVRRbaProfiler::Id {
public:
    template <std::size_t Size>
    consteval Id(const char (&literal)[Size]) noexcept : m_value(Hash(literal)) {}
    /// For names that are made at run time.
    template <std::size_t Size>
    constexpr Id(char (&buffer)[Size]) noexcept : m_value(Hash(buffer)) {}
    template <class Pointer>
    requires std::is_pointer_v<Pointer>
    constexpr Id(const Pointer& name) noexcept : m_value(Hash(name)) {}

    constexpr std::uint32_t Value() const noexcept { return m_value; }

private:
    /// FNV-1a with 32 bits (Fowler, Noll, Vo), except that bytes from 128 on count as negative
    /// numbers and change all bits above them, too; kept for compatibility.
    static constexpr std::uint32_t Hash(const char* name) noexcept {
        std::uint32_t hash = 0x811c9dc5;
        for (; *name; ++name) {
            hash ^= static_cast<std::uint32_t>(static_cast<signed char>(*name));
            hash *= 0x01000193;
        }
        return hash;
    }

    std::uint32_t m_value;
};

/// Measures from where it is made to the end of the block, with the process's profiler.
class KVRRbaProfiler::Probe {
public:
    Probe(Id group, Id timer) noexcept : m_group(group.Value()), m_timer(timer.Value()) {
        GetInstance().Resume(m_group, m_timer);
    }
    ~Probe() { GetInstance().Pause(m_group, m_timer); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

private:
    std::uint32_t m_group;
    std::uint32_t m_timer;
};
