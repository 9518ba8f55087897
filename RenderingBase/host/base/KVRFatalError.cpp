#include "RenderingBase/host/base/KVRFatalError.h"

#include <cstdio>
#include <cstdlib>

void KVRFatalErrorSimple(const char* message, const char* file, int line) {
    std::fprintf(stderr, "Fatal error: %s (%s, line %d)\n", message ? message : "",
                 file ? file : "", line);
    std::fflush(stderr);
    std::abort();
}
