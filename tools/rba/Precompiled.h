#pragma once

// The two headers that take longest to compile, once for the whole tool.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
