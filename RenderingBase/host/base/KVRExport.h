#pragma once

/// @file  Marks what a shared library of ours shows to others; everything else is hidden.
///
/// On the systems that we build for, the same attribute exports and imports. It also keeps the type
/// information of a class unique across libraries, which `dynamic_cast` needs.
#define KVR_EXPORT __attribute__((visibility("default")))
