#pragma once

/// @file  Whole zlib streams (RFC 1950) whose content has a known length.

#include <cstddef>
#include <span>

namespace rb::imaging {

/// Fills @p content with what @p stream holds. Throws std::bad_alloc.
/// @return  False when that is damaged or of another length; the content is undefined then.
[[nodiscard]] bool inflateStream(std::span<const std::byte> stream, std::span<std::byte> content);

}  // namespace rb::imaging
