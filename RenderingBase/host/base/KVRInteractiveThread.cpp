#include "RenderingBase/host/base/KVRInteractiveThread.h"

#include <thread>

namespace {

const std::thread::id g_interactiveThread = std::this_thread::get_id();

}  // namespace

bool KVRIsInteractiveThread() noexcept { return std::this_thread::get_id() == g_interactiveThread; }
