#include "RenderingBase/host/files/ZWTSysPath.h"

#include "RenderingBase/host/files/KVRFileSystem.h"

bool ZWTSysPath::Exists() const { return KVRFileAccess(m_path, 0) == S_OK; }
