#include "RenderingBase/host/modeler/KVRModeler.h"
#include "tests/host/ModelerTypes.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

class Shared : public KVRClass<"KVRThreadsTestShared"> {
public:
    static inline std::atomic<int> alive{0};
    Shared() { ++alive; }
    ~Shared() override { --alive; }
};

class KVR_EXPORT Counter : public KVRInterface<"KVRThreadsTestCounter"> {
public:
    virtual int Next() = 0;
};

// A tie that knows whether it is still alive.
class SharedShape : public KVRClass<"KVRThreadsTestSharedShape", KVRITestShape> {
public:
    static inline std::atomic<int> alive{0};
    SharedShape() { ++alive; }
    ~SharedShape() override {
        m_corners = 0;
        --alive;
    }
    int CornerCount() override { return m_corners; }

private:
    std::atomic<int> m_corners{3};
};

class SharedCounter : public KVRClass<"KVRThreadsTestSharedCounter", Counter> {
public:
    int Next() override { return ++m_count; }

private:
    std::atomic<int> m_count{0};
};

class KVR_EXPORT Meeting : public KVRInterface<"KVRThreadsTestMeeting"> {
public:
    virtual void Meet() = 0;
};

// Is made by two threads at once, or never.
class SharedMeeting : public KVRClass<"KVRThreadsTestSharedMeeting", Meeting> {
public:
    static inline std::latch made{2};
    static inline std::atomic<int> alive{0};
    SharedMeeting() {
        ++alive;
        made.arrive_and_wait();
    }
    ~SharedMeeting() override { --alive; }
    void Meet() override {}
};

class Unused : public KVRClass<"KVRThreadsTestUnused", Shared> {};

template <class Work>
void onThreads(Work work) {
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            work();
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace

KVR_DECLARE_TIE(KVRITestShape, SharedShape);
KVR_TIE(KVRITestShape, SharedShape, "KVRThreadsTestShared");
KVR_DATA_EXTENSION(Counter, SharedCounter, "KVRThreadsTestShared");
KVR_DATA_EXTENSION(Meeting, SharedMeeting, "KVRThreadsTestShared");

TEST(KVRModelerThreads, tie_is_never_found_after_its_last_release) {
    const auto object = KVRVar<Shared>::Adopt(new Shared);
    std::atomic<int> wrong{0};
    onThreads([&] {
        for (int i = 0; i < kRounds; ++i) {
            const auto shape = KVRQuery<KVRITestShape>(object);
            if (!shape || shape->CornerCount() != 3 || !KVRIsEqual(shape.Get(), object.Get()))
                ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(SharedShape::alive, 0);
    EXPECT_EQ(object->AddRef(), 2U);  // every tie has given its reference back
    object->Release();
}

TEST(KVRModelerThreads, tie_that_is_held_is_the_one_that_all_find) {
    const auto object = KVRVar<Shared>::Adopt(new Shared);
    const auto held = KVRQuery<KVRITestShape>(object);
    std::atomic<int> wrong{0};
    onThreads([&] {
        for (int i = 0; i < kRounds; ++i) {
            if (KVRQuery<KVRITestShape>(object) != held) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(SharedShape::alive, 1);
}

TEST(KVRModelerThreads, data_extension_is_one_for_all_threads) {
    for (int round = 0; round < 200; ++round) {
        const auto object = KVRVar<Shared>::Adopt(new Shared);
        onThreads([&] { KVRQuery<Counter>(object)->Next(); });
        ASSERT_EQ(KVRQuery<Counter>(object)->Next(), kThreads + 1);
    }
    EXPECT_EQ(Shared::alive, 0);
}

TEST(KVRModelerThreads, threads_that_make_an_adapter_at_once_get_one) {
    const auto object = KVRVar<Shared>::Adopt(new Shared);
    KVRVar<Meeting> theirs;
    std::thread other([&] { theirs = KVRQuery<Meeting>(object); });
    const auto mine = KVRQuery<Meeting>(object);
    other.join();
    ASSERT_TRUE(mine);
    EXPECT_EQ(mine, theirs);
    EXPECT_EQ(SharedMeeting::alive, 1);
}

TEST(KVRModelerThreads, object_dies_once_when_its_adapters_are_released_at_once) {
    for (int round = 0; round < 500; ++round) {
        auto object = KVRVar<Shared>::Adopt(new Shared);
        std::vector<KVRVar<KVRBaseUnknown>> references(kThreads);
        for (std::size_t i = 0; i < references.size(); i += 2) {
            references[i] = KVRQuery<KVRITestShape>(object);
            references[i + 1] = KVRQuery<Counter>(object);
        }
        object.Reset();
        std::atomic<std::size_t> next{0};
        onThreads([&] { references[next++].Reset(); });
        ASSERT_EQ(Shared::alive, 0);
        ASSERT_EQ(SharedShape::alive, 0);
    }
}

// Neither a query nor the first use of a class may wait for whoever holds the guard of
// registrations: it may be waiting for that very class.
TEST(KVRModelerThreads, queries_do_not_wait_for_the_guard) {
    const std::scoped_lock guard(KVRModeler::Guard());
    std::thread([] {
        const auto object = KVRVar<Unused>::Adopt(new Unused);
        EXPECT_TRUE(KVRQuery<KVRITestShape>(object));
        EXPECT_TRUE(KVRQuery<Counter>(object));
    }).join();
}

TEST(KVRModelerThreads, registration_waits_for_the_guard) {
    std::atomic<bool> started{false}, registered{false};
    std::thread registering;
    {
        const std::scoped_lock guard(KVRModeler::Guard());
        registering = std::thread([&] {
            started = true;
            KVRModeler::BindComponent("KVRThreadsTestLate", &KVRMake<Shared>);
            registered = true;
        });
        KVRModeler::BindComponent("KVRThreadsTestMine", &KVRMake<Shared>);  // the holder goes on
        while (!started) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // time to go wrong
        EXPECT_EQ(KVRModeler::Create("KVRThreadsTestLate"), nullptr);
        EXPECT_FALSE(registered);
    }
    registering.join();
    EXPECT_TRUE(registered);
    EXPECT_TRUE(KVRVar<KVRBaseUnknown>::Adopt(KVRModeler::Create("KVRThreadsTestLate")));
}
