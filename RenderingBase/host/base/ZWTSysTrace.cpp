#include "RenderingBase/host/base/ZWTSysTrace.h"

#include "RenderingBase/host/base/KVREnvironment.h"

#include <cstdarg>
#include <glib.h>
#include <string_view>

namespace {

bool listHas(std::string_view list, std::string_view name) {
    while (!list.empty()) {
        const std::size_t end = list.find(';');
        if (list.substr(0, end) == name) return true;
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return false;
}

std::string formatted(const char* format, va_list arguments) {
    const std::unique_ptr<char, decltype(&g_free)> text(g_strdup_vprintf(format, arguments),
                                                        &g_free);
    return text ? text.get() : format;  // none for an encoding error of the system
}

// GLib sends information and debug lines to standard output or drops them; messages and warnings go
// to standard error, so these two levels stand for information and error.
void write(GLogLevelFlags level, const std::string& name, const std::string& text) {
    g_log_structured("RenderingBase", level, "MESSAGE", "%s: %s", name.c_str(), text.c_str());
}

}  // namespace

void ZWTSysTrace::Info(const char* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    write(G_LOG_LEVEL_MESSAGE, m_name, formatted(format, arguments));
    va_end(arguments);
}

void ZWTSysTrace::Error(const char* file, int line, const char* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    write(G_LOG_LEVEL_WARNING, m_name,
          std::string(file ? file : "") + ", line " + std::to_string(line) + ": " + text);
}

ZWTSysTraceHandle ZWTSysTraceCreate(const char* name) {
    const char* enabled = KVRGetEnv("ZWTSysTraces");
    if (!name || !*name || !enabled || !listHas(enabled, name)) return nullptr;
    return std::make_unique<const ZWTSysTrace>(name);
}
