#pragma once

/// @file  Which kind of processor kernels are running on.
///
/// Highway would tell, but its shared library measures the clock of the processor when it is
/// loaded, which takes 4 ms of every process. Only its headers are used.

#include <optional>

namespace rb::kernels {

/// Kinds that kernels are compiled for, the best first. Plain is every processor.
enum class Processor {
    Avx3,  ///< AVX-512 with F, VL, DQ and BW.
    Avx2,  ///< With BMI2, FMA and F16C.
    Sse4,
    Ssse3,
    Plain,
};
inline constexpr int kProcessors = 5;

/// Whether this machine can stand for that kind.
bool isAvailable(Processor processor);

/// The best kind that this machine can stand for, unless another one is forced.
Processor chosenProcessor();

/// For tests: has kernels take an available kind; nothing lets them choose again. Not while kernels
/// run.
void forceProcessor(std::optional<Processor> processor);

}  // namespace rb::kernels
