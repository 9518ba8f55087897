// Does, in a process of its own, what a test cannot do in its own one.

#include "RenderingBase/host/app/KVRSettingRepository.h"
#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/base/KVRExitCallback.h"
#include "RenderingBase/host/modeler/KVRExternalObject.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

int say(const char* who, int phase) {
    std::printf("%s(%d)\n", who, phase);
    return 1;
}
int first(int phase) { return say("first", phase); }
int second(int phase) { return say("second", phase); }
int late(int phase) { return say("late", phase); }
int registers(int phase) {
    KVRRegisterExitCallback(&late, phase);
    return say("registers", phase);
}

struct SaysGoodbye {
    ~SaysGoodbye() { std::puts("static destroyed"); }
};

int exitCallbacks() {
    static const SaysGoodbye destroyedLast;
    KVRRegisterExitCallback(&first, 9);
    KVRRegisterExitCallback(&first, 3);
    KVRRegisterExitCallback(&first, 1);
    KVRRegisterExitCallback(&second, 3);
    KVRRegisterExitCallback(&second, 3);
    KVRRegisterExitCallback(nullptr, 2);
    KVRRegisterExitCallback(&registers, 5);
    std::puts("main ends");
    return 7;
}

int externalObject(const char* name, const char* library) {
    const auto object = KVRVar<KVRBaseUnknown>::Adopt(KVRCreateExternalObject(name, library));
    std::puts(object ? object->IsA() : "null");
    return 0;
}

int writeSettings(const char* repository, const char* prefix, int count) {
    const auto settings =
        KVRVar<KVRSettingRepository>::Adopt(KVRSettingRepository::CreateRepository(repository));
    if (!settings) return 1;
    for (int i = 0; i < count; ++i) {
        if (Failed(settings->WriteSetting((prefix + std::to_string(i)).c_str(), i))) return 2;
    }
    return 0;
}

int readSetting(const char* repository, const char* name) {
    const auto settings =
        KVRVar<KVRSettingRepository>::Adopt(KVRSettingRepository::GetRepository(repository));
    KVRUnicodeString value;
    if (!settings || Failed(settings->ReadSetting(name, value))) return 1;
    std::fputs(value.CastToCharPtr(), stdout);
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    const std::string_view command = argumentCount > 1 ? arguments[1] : "";
    if (command == "temp-directory")
        return std::fputs(KVRGetTempDirectory().CastToCharPtr(), stdout) < 0;
    if (command == "exit-callbacks") return exitCallbacks();
    if (command == "external-object" && argumentCount == 4) {
        return externalObject(arguments[2], arguments[3]);
    }
    if (command == "write-settings" && argumentCount == 5) {
        return writeSettings(arguments[2], arguments[3], std::atoi(arguments[4]));
    }
    if (command == "read-setting" && argumentCount == 4)
        return readSetting(arguments[2], arguments[3]);
    return 64;
}
