#include "RenderingBase/host/modeler/KVRClass.h"
#include "RenderingBase/host/modeler/KVRMetaClass.h"
#include "RenderingBase/host/modeler/KVRModeler.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

class Rep : public KVRClass<"KVRMetaTestRep"> {};
class PipeRep : public KVRClass<"KVRMetaTestPipeRep", Rep> {};

// A component that no test makes.
class Untouched : public KVRClass<"KVRMetaTestUntouched", Rep> {};
KVR_COMPONENT(Untouched);

class WithConstructor : public KVRClass<"KVRMetaTestWithConstructor"> {
public:
    explicit WithConstructor(int given) : value(given) {}
    int value;
};
class Inheriting : public KVRClass<"KVRMetaTestInheriting", WithConstructor> {
public:
    using KVRClass::KVRClass;
};

}  // namespace

TEST(KVRMetaClass, classes_know_their_name_and_what_they_derive_from) {
    const PipeRep pipe;
    EXPECT_STREQ(PipeRep::ClassId(), "KVRMetaTestPipeRep");
    EXPECT_STREQ(pipe.IsA(), "KVRMetaTestPipeRep");
    EXPECT_EQ(pipe.IsAKindOf("KVRMetaTestPipeRep"), 1);
    EXPECT_EQ(pipe.IsAKindOf("KVRMetaTestRep"), 1);
    EXPECT_EQ(pipe.IsAKindOf("KVRBaseUnknown"), 1);
    EXPECT_EQ(pipe.IsAKindOf("KVRMetaTestInheriting"), 0);
    EXPECT_EQ(pipe.IsAKindOf("kvrmetatestrep"), 0);
    EXPECT_EQ(pipe.IsAKindOf(""), 0);
    EXPECT_EQ(pipe.IsAKindOf(nullptr), 0);
    EXPECT_EQ(Rep().IsAKindOf("KVRMetaTestPipeRep"), 0);
    EXPECT_EQ(PipeRep::MetaObject().GetBase(), &Rep::MetaObject());
    EXPECT_EQ(&pipe.GetMetaObject(), &PipeRep::MetaObject());
    EXPECT_EQ(KVRMetaClass::Find("KVRMetaTestPipeRep"), &PipeRep::MetaObject());
    EXPECT_TRUE(PipeRep::MetaObject().IsAKindOf(Rep::MetaObject()));
    EXPECT_EQ(KVRBaseUnknown::MetaObject().GetBase(), nullptr);
}

TEST(KVRMetaClass, class_is_known_before_an_object_is_made) {
    const auto* type = KVRMetaClass::Find("KVRMetaTestUntouched");
    ASSERT_NE(type, nullptr);
    EXPECT_TRUE(type->IsAKindOf("KVRMetaTestRep"));
}

TEST(KVRMetaClass, derived_class_inherits_constructors) {
    const Inheriting object(5);
    EXPECT_EQ(object.value, 5);
    EXPECT_STREQ(object.IsA(), "KVRMetaTestInheriting");
}

TEST(KVRMetaClass, defines_types_by_name) {
    EXPECT_EQ(KVRMetaClass::Find("KVRMetaTestLight"), nullptr);
    const auto& light = KVRMetaClass::Define("KVRMetaTestLight", "KVRMetaTestRep");
    EXPECT_STREQ(light.GetName(), "KVRMetaTestLight");
    EXPECT_EQ(KVRMetaClass::Find("KVRMetaTestLight"), &light);
    EXPECT_EQ(light.GetBase(), &Rep::MetaObject());
    EXPECT_TRUE(light.IsAKindOf("KVRBaseUnknown"));
    // Known already: the same type, with the base it had.
    EXPECT_EQ(&KVRMetaClass::Define("KVRMetaTestLight", "KVRBaseUnknown"), &light);
    EXPECT_TRUE(light.IsAKindOf("KVRMetaTestRep"));
    EXPECT_EQ(KVRMetaClass::Define("KVRMetaTestBaseless", "").GetBase(),
              &KVRBaseUnknown::MetaObject());
}

TEST(KVRMetaClass, base_may_be_defined_later) {
    const auto& spot = KVRMetaClass::Define("KVRMetaTestSpot", "KVRMetaTestLamp");
    EXPECT_EQ(spot.GetBase(), nullptr);
    EXPECT_FALSE(spot.IsAKindOf("KVRMetaTestLamp"));
    const auto& lamp = KVRMetaClass::Define("KVRMetaTestLamp", "KVRBaseUnknown");
    EXPECT_EQ(spot.GetBase(), &lamp);
    EXPECT_TRUE(spot.IsAKindOf("KVRMetaTestLamp"));
    EXPECT_TRUE(spot.IsAKindOf("KVRBaseUnknown"));
}

TEST(KVRMetaClass, circle_of_bases_is_cut) {
    const auto& self = KVRMetaClass::Define("KVRMetaTestSelf", "KVRMetaTestSelf");
    EXPECT_EQ(self.GetBase(), &KVRBaseUnknown::MetaObject());
    KVRMetaClass::Define("KVRMetaTestCircleA", "KVRMetaTestCircleB");
    KVRMetaClass::Define("KVRMetaTestCircleB", "KVRMetaTestCircleC");
    const auto& last = KVRMetaClass::Define("KVRMetaTestCircleC", "KVRMetaTestCircleA");
    EXPECT_EQ(last.GetBase(), &KVRBaseUnknown::MetaObject());
    const auto* first = KVRMetaClass::Find("KVRMetaTestCircleA");
    EXPECT_TRUE(first->IsAKindOf("KVRMetaTestCircleC"));
    EXPECT_FALSE(first->IsAKindOf("KVRMetaTestNowhere"));  // comes to an end
}

TEST(KVRMetaClass, threads_that_define_one_name_get_one_type) {
    std::vector<const KVRMetaClass*> types(4);
    std::vector<std::thread> threads;
    for (auto& type : types) {
        threads.emplace_back([&type] {
            for (int i = 0; i < 200; ++i) {
                const std::string name = "KVRMetaTestShared" + std::to_string(i);
                type = &KVRMetaClass::Define(name, i ? "KVRMetaTestShared0" : "");
                EXPECT_TRUE(type->IsAKindOf("KVRMetaTestShared0"));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto* type : types) EXPECT_EQ(type, types.front());
}
