// A library that no test links: it is loaded by its name.

#include "RenderingBase/host/modeler/KVRModeler.h"
#include "tests/host/ModelerTypes.h"

class KVRTestPlugged : public KVRClass<"KVRTestPlugged", KVRITestName> {
public:
    const char* Name() override { return "from the plug-in"; }
};
KVR_COMPONENT(KVRTestPlugged);

class KVRTestPartShape : public KVRClass<"KVRTestPartShape", KVRITestShape> {
public:
    int CornerCount() override {
        const auto* part = dynamic_cast<const KVRTestPart*>(GetImpl());
        return part ? part->corners : -1;
    }
};
KVR_DECLARE_TIE(KVRITestShape, KVRTestPartShape);
KVR_TIE(KVRITestShape, KVRTestPartShape, "KVRTestPart");
