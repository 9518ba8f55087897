#pragma once

/// @file  Result codes: a signed 32-bit status, 0 for success and negative for failure.

#include <cstdint>

using HRESULT = std::int32_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);         ///< Generic failure.
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);   ///< Invalid argument.
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);      ///< Not implemented.
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);  ///< Out of memory.
/// An object does not answer an interface; returned by interface queries only.
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);

constexpr bool Succeeded(HRESULT status) { return status >= 0; }
constexpr bool Failed(HRESULT status) { return status < 0; }
