#include "RenderingBase/KVRRbaModel.m/src/kernels/Processor.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace rb::kernels {
namespace {

std::optional<Processor> g_forced;

#if defined(__x86_64__) || defined(__i386__)

/// The compilers' own test has no name for it everywhere.
bool hasF16c() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_F16C) != 0;
}

// Each of these includes that the system saves the registers.
bool hasSsse3() { return __builtin_cpu_supports("ssse3") != 0; }
bool hasSse4() {
    return hasSsse3() && __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("pclmul") &&
           __builtin_cpu_supports("aes");
}
bool hasAvx2() {
    return hasSse4() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
           __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma") && hasF16c();
}
bool hasAvx3() {
    return hasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
}

#else

bool hasSsse3() { return false; }
bool hasSse4() { return false; }
bool hasAvx2() { return false; }
bool hasAvx3() { return false; }

#endif

Processor bestProcessor() {
    if (hasAvx3()) return Processor::Avx3;
    if (hasAvx2()) return Processor::Avx2;
    if (hasSse4()) return Processor::Sse4;
    return hasSsse3() ? Processor::Ssse3 : Processor::Plain;
}

}  // namespace

bool isAvailable(Processor processor) { return processor >= bestProcessor(); }

Processor chosenProcessor() {
    static const Processor best = bestProcessor();
    return g_forced.value_or(best);
}

void forceProcessor(std::optional<Processor> processor) { g_forced = processor; }

}  // namespace rb::kernels
