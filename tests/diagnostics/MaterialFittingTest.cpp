#include "RenderingBase/public/KVRRbaMaterialFittingController.h"
#include "tests/diagnostics/Probe.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using Controller = KVRRbaMaterialFittingController;
using rb::test::probed;

static_assert(sizeof(GlossinessFittingMode) == 4);
static_assert(std::is_base_of_v<KVRBaseUnknown, Controller>);
static_assert(!std::is_default_constructible_v<Controller>);
static_assert(std::has_virtual_destructor_v<Controller>);

TEST(MaterialFitting, is_off_in_mode_2_until_the_controller_is_made) {
    EXPECT_EQ(probed("fitting", {}), "glossiness 0, Fresnel 0, mode 2\n");
    EXPECT_EQ(probed("fitting", {{"RND_MATERIAL_NOT_FITTED", "1"}}),
              "glossiness 0, Fresnel 0, mode 2\n");
}

TEST(MaterialFitting, keeps_what_is_set_before_until_the_controller_is_made) {
    EXPECT_EQ(probed("fitting-set", {}), "glossiness 1, Fresnel 0, mode 5\n");
    EXPECT_EQ(probed("fitting-set-made", {}), "glossiness 1, Fresnel 1, mode 2\n");
    EXPECT_EQ(probed("fitting-set-made", {{"RND_MATERIAL_NOT_FITTED", ""}}),
              "glossiness 0, Fresnel 0, mode 2\n");
}

TEST(MaterialFitting, is_on_when_the_controller_is_made_unless_the_variable_is_defined) {
    EXPECT_EQ(probed("fitting-made", {}), "glossiness 1, Fresnel 1, mode 2\n");
    for (const char* value : {"", "0", "1", "no"}) {
        EXPECT_EQ(probed("fitting-made", {{"RND_MATERIAL_NOT_FITTED", value}}),
                  "glossiness 0, Fresnel 0, mode 2\n")
            << value;
    }
}

TEST(MaterialFitting, looks_at_the_environment_when_the_controller_is_made) {
    EXPECT_EQ(probed("fitting-defined-made", {}), "glossiness 0, Fresnel 0, mode 2\n");
}

TEST(MaterialFitting, keeps_what_is_set_when_the_controller_is_asked_for_again) {
    EXPECT_EQ(probed("fitting-made-set-made", {}), "glossiness 1, Fresnel 0, mode 5\n");
    EXPECT_EQ(probed("fitting-made-set-made", {{"RND_MATERIAL_NOT_FITTED", "1"}}),
              "glossiness 1, Fresnel 0, mode 5\n");
}

TEST(MaterialFitting, sets_each_switch_alone) {
    Controller::GetMaterialFittingController();
    Controller::setMaterialGlossFittingActiveState(false);
    EXPECT_FALSE(Controller::getMaterialGlossFittingActiveState());
    EXPECT_TRUE(Controller::getMaterialFresnelFittingState());
    Controller::setMaterialFresnelFittingState(false);
    Controller::setMaterialGlossFittingActiveState(true);
    EXPECT_TRUE(Controller::getMaterialGlossFittingActiveState());
    EXPECT_FALSE(Controller::getMaterialFresnelFittingState());
    EXPECT_EQ(Controller::getGlossinessFittingMode(), GlossinessFittingMode::Default);
    Controller::setGlossinessFittingMode(static_cast<GlossinessFittingMode>(-1));
    EXPECT_EQ(static_cast<int>(Controller::getGlossinessFittingMode()), -1);
}

TEST(MaterialFitting, has_one_controller_which_is_an_object_of_the_framework) {
    Controller* const controller = Controller::GetMaterialFittingController();
    ASSERT_NE(controller, nullptr);
    EXPECT_EQ(Controller::GetMaterialFittingController(), controller);
    EXPECT_STREQ(controller->IsA(), "KVRRbaMaterialFittingController");
    EXPECT_EQ(controller->AddRef(), 2U);
    EXPECT_EQ(controller->Release(), 1U);
}

TEST(MaterialFitting, leaves_the_switches_alone_when_the_controller_is_copied) {
    Controller* const controller = Controller::GetMaterialFittingController();
    Controller::setMaterialFresnelFittingState(false);
    Controller::setGlossinessFittingMode(static_cast<GlossinessFittingMode>(7));
    {
        Controller copy(*controller);
        copy = *controller;
        EXPECT_EQ(copy.AddRef(), 2U);  // a count of its own
        EXPECT_EQ(Controller::GetMaterialFittingController(), controller);
    }
    EXPECT_FALSE(Controller::getMaterialFresnelFittingState());
    EXPECT_EQ(static_cast<int>(Controller::getGlossinessFittingMode()), 7);
}

}  // namespace
