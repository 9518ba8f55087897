// Resolves the paths on the command line in the environment that the library was loaded in, and
// prints a line for each.
#include "RenderingBase/public/KVRRbaPathResolver.h"

#include <iostream>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        std::cout << KVRRbaPathResolver::Resolve(ZWTSysPath(argv[i])).ToString() << '\n';
    return 0;
}
