#pragma once

/// @file  What the decoder of each kind of block offers to the common entry.

#include <cstddef>

namespace rb::imaging {

/// Decodes @p count blocks that lie side by side, all of them whole. The four rows of pixels that
/// they make begin at @p pixels, @p rowBytes apart, and have no alignment.
using DecodeRun = void (*)(const std::byte* blocks, std::size_t count, std::byte* pixels,
                           std::size_t rowBytes);

void decodeBc1Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);
void decodeBc2Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);
void decodeBc3Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);
void decodeBc4Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);
void decodeBc4SignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                        std::size_t rowBytes);
void decodeBc5Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);
void decodeBc5SignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                        std::size_t rowBytes);
void decodeBc6hRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                   std::size_t rowBytes);
void decodeBc6hSignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                         std::size_t rowBytes);
void decodeBc7Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes);

// The same for processors with AVX2; see BlockAvx2.h.
void decodeBc1RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);
void decodeBc2RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);
void decodeBc3RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);
void decodeBc4RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);
void decodeBc4SignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                            std::size_t rowBytes);
void decodeBc5RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);
void decodeBc5SignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                            std::size_t rowBytes);
void decodeBc6hRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                       std::size_t rowBytes);
void decodeBc6hSignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                             std::size_t rowBytes);
void decodeBc7RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                      std::size_t rowBytes);

}  // namespace rb::imaging
