// Linked into a program, stands in for the search of the host: as a search in an index that is out
// of date would, it finds everything in every list, whether it is there or not.
#include "RenderingBase/host/files/KVRPath.h"

#include <algorithm>
#include <string>

char* KVRFindPath(const char* relative, const char* pathList) {
    const std::string found = std::string(pathList) + "\\" + relative;
    char* text = new char[found.size() + 1];
    std::copy_n(found.c_str(), found.size() + 1, text);
    return text;
}
