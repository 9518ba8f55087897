#pragma once

/// @file  The host's own trace, for following what a facility does. It is not the library's trace
/// log.
///
///     const auto trace = ZWTSysTraceCreate("KVRRbaPathResolver");
///     if (trace) trace->Info("Resolving %s ...", path);

#include "RenderingBase/host/base/KVRExport.h"

#include <memory>
#include <string>

/// An open trace; closed by its destructor. Lines go to standard error.
/// Threads: all members may be called at once.
class KVR_EXPORT ZWTSysTrace {
public:
    explicit ZWTSysTrace(const char* name) : m_name(name) {}
    ZWTSysTrace(const ZWTSysTrace&) = delete;
    ZWTSysTrace& operator=(const ZWTSysTrace&) = delete;

    /// Writes a line of information. @param format  as for `printf`, texts in UTF-8.
    void Info(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    /// Writes an error line that names the source file and the line.
    void Error(const char* file, int line, const char* format, ...) const
        __attribute__((format(printf, 4, 5)));

private:
    std::string m_name;
};

using ZWTSysTraceHandle = std::unique_ptr<const ZWTSysTrace>;

/// Opens a trace, or returns null when it is off. A trace is on when its name stands in the
/// ";"-separated list of the environment variable `ZWTSysTraces`, which is read at each call.
KVR_EXPORT ZWTSysTraceHandle ZWTSysTraceCreate(const char* name);
