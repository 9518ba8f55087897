#pragma once

/// @file  Interfaces and classes that the tests of the modeler and their plug-in share.

#include "RenderingBase/host/modeler/KVRClass.h"

class KVR_EXPORT KVRITestShape : public KVRInterface<"KVRITestShape"> {
public:
    virtual int CornerCount() = 0;
};

class KVR_EXPORT KVRITestName : public KVRInterface<"KVRITestName"> {
public:
    virtual const char* Name() = 0;
};

/// Served by nothing.
class KVR_EXPORT KVRITestNobody : public KVRInterface<"KVRITestNobody"> {
public:
    virtual void Never() = 0;
};

/// A type that the plug-in extends.
class KVR_EXPORT KVRTestPart : public KVRClass<"KVRTestPart"> {
public:
    int corners = 0;
};
