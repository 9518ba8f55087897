#pragma once

/// @file  From the text of a photometric file to the record of its values.

#include "RenderingBase/public/KVRRbaIESLoader.h"

namespace rb::photometry {

/// Fills @p photometry, in which nothing but the path is set, and @p unused. Throws ReadFailure and
/// std::bad_alloc; what was read until then is in both.
/// @return  E_FAIL, with a line in the trace log, when there are less angles than declared.
HRESULT parse(std::string_view text, KVRRbaIESLoader::IESPhotometry& photometry,
              KVRRbaIESLoader::IESUnusedData& unused);

}  // namespace rb::photometry
