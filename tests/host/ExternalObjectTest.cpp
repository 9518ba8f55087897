#include "RenderingBase/host/modeler/KVRExternalObject.h"
#include "RenderingBase/host/modeler/KVRModeler.h"
#include "tests/host/ChildProcess.h"
#include "tests/host/ModelerTypes.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace fs = std::filesystem;
using rb::test::ChildProcess;

namespace {

struct Outcome {
    int status;
    std::string output;
};

// The host's own folder has the plug-in under "KVRHostTestPlugin"; other folders come by the loader
// path.
Outcome create(const std::string& name, const std::string& library,
               const std::string& loaderPath = {}) {
    ChildProcess child(
        {RB_HOST_TEST_PROGRAM, "external-object", name, library},
        {{"LD_LIBRARY_PATH", loaderPath}, {"ZWTSysTraces", "KVRCreateExternalObject"}});
    const int status = child.wait();
    return {status, child.output()};
}

}  // namespace

TEST(KVRCreateExternalObject, component_appears_when_its_library_is_loaded) {
    KVRITestName* early = nullptr;
    ASSERT_EQ(KVRInstantiateComponent("KVRTestPlugged", KVRIidOf<KVRITestName>(),
                                      reinterpret_cast<void**>(&early)),
              E_FAIL);
    const auto part = KVRVar<KVRTestPart>::Adopt(new KVRTestPart);
    part->corners = 5;
    ASSERT_FALSE(KVRQuery<KVRITestShape>(part));

    const auto made = KVRVar<KVRBaseUnknown>::Adopt(
        KVRCreateExternalObject("KVRTestPlugged", "KVRHostTestPlugin"));
    ASSERT_TRUE(made);
    EXPECT_STREQ(made->IsA(), "KVRTestPlugged");
    const auto name = KVRQuery<KVRITestName>(made);
    ASSERT_TRUE(name);
    EXPECT_STREQ(name->Name(), "from the plug-in");

    // What else the library registers serves the objects of this program.
    const auto shape = KVRQuery<KVRITestShape>(part);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->CornerCount(), 5);
    EXPECT_TRUE(KVRIsEqual(shape.Get(), part.Get()));
}

TEST(KVRCreateExternalObject, makes_a_new_object_each_time) {
    const auto create = [] {
        return KVRVar<KVRBaseUnknown>::Adopt(
            KVRCreateExternalObject("KVRTestPlugged", "KVRHostTestPlugin"));
    };
    const auto first = create();
    const auto second = create();
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(KVRIsEqual(first.Get(), second.Get()));
}

TEST(KVRCreateExternalObject, unknown_names_give_null) {
    for (const auto& [name, library] : {std::pair{"KVRTestPlugged", "KVRNoSuchLibrary"},
                                        {"KVRNoSuchComponent", "KVRHostTestPlugin"},
                                        {"KVRTestPlugged", ""},
                                        {"", "KVRHostTestPlugin"}}) {
        const Outcome outcome = create(name, library);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(outcome.output.ends_with("null\n")) << outcome.output;
    }
    EXPECT_EQ(KVRCreateExternalObject(nullptr, "KVRHostTestPlugin"), nullptr);
    EXPECT_EQ(KVRCreateExternalObject("KVRNoSuchComponent", nullptr), nullptr);
}

TEST(KVRCreateExternalObject, finds_libraries_on_the_loader_path) {
    const rb::test::TempFolder folder;
    fs::copy_file(RB_HOST_TEST_PLUGIN, folder.file("libElsewhere.so"));
    EXPECT_TRUE(create("KVRTestPlugged", "Elsewhere").output.ends_with("null\n"));
    const Outcome outcome = create("KVRTestPlugged", "Elsewhere", folder.path().string());
    EXPECT_TRUE(outcome.output.ends_with("\nKVRTestPlugged\n")) << outcome.output;
}

TEST(KVRCreateExternalObject, library_is_a_name_and_no_path) {
    const rb::test::TempFolder folder;
    fs::create_directory(folder.path() / "libsub");
    fs::copy_file(RB_HOST_TEST_PLUGIN, folder.file("libsub/Elsewhere.so"));
    ChildProcess child({"/usr/bin/env", "-C", folder.path().string(), RB_HOST_TEST_PROGRAM,
                        "external-object", "KVRTestPlugged", "sub/Elsewhere"});
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(child.output(), "null\n");
}

TEST(KVRCreateExternalObject, damaged_library_gives_null_and_a_trace) {
    const rb::test::TempFolder folder;
    folder.write("libDamaged.so", "no library at all");
    const Outcome outcome = create("KVRTestPlugged", "Damaged", folder.path().string());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.ends_with("null\n")) << outcome.output;
    EXPECT_NE(outcome.output.find("libDamaged.so"), std::string::npos) << outcome.output;
}
