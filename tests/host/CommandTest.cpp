#include "RenderingBase/host/app/KVRCommand.h"
#include "RenderingBase/host/base/KVRInteractiveThread.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

/// Counts those that there are.
class CountedCommand : public KVRClass<"CountedCommand", KVRCommand> {
public:
    explicit CountedCommand(KVRCommand* parent = nullptr, const char* name = nullptr)
        : KVRClass(parent, name) {
        ++s_count;
    }
    ~CountedCommand() override { --s_count; }

    static inline int s_count = 0;
};

void runMainLoopOnce() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

TEST(Command, has_a_parent_and_a_name) {
    CountedCommand parent(nullptr, "edit");
    CountedCommand child(&parent);
    EXPECT_EQ(parent.GetParent(), nullptr);
    EXPECT_STREQ(parent.GetName(), "edit");
    EXPECT_EQ(child.GetParent(), &parent);
    EXPECT_STREQ(child.GetName(), "");
    EXPECT_EQ(child.IsAKindOf("KVRCommand"), 1);
}

TEST(Command, is_destroyed_on_request_when_the_main_loop_is_idle) {
    auto* const command = new CountedCommand;
    command->RequestDelayedDestruction();
    EXPECT_EQ(CountedCommand::s_count, 1);
    runMainLoopOnce();
    EXPECT_EQ(CountedCommand::s_count, 0);
}

TEST(Command, stays_after_the_request_for_whoever_holds_it) {
    auto* const command = new CountedCommand;
    command->AddRef();
    command->RequestDelayedDestruction();
    runMainLoopOnce();
    EXPECT_EQ(CountedCommand::s_count, 1);
    EXPECT_EQ(command->Release(), 0U);
    EXPECT_EQ(CountedCommand::s_count, 0);
}

TEST(InteractiveThread, is_the_one_that_loaded_the_host) {
    EXPECT_TRUE(KVRIsInteractiveThread());
    bool another = true;
    std::thread([&] { another = KVRIsInteractiveThread(); }).join();
    EXPECT_FALSE(another);
}

}  // namespace
