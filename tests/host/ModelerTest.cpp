#include "RenderingBase/host/modeler/KVRModeler.h"
#include "tests/host/ModelerTypes.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Objects of these classes leave their name here when they are destroyed.
std::vector<std::string> g_destroyed;

struct Destruction {
    explicit Destruction(const char* given) : name(given) {}
    ~Destruction() { g_destroyed.emplace_back(name); }
    const char* name;
};

class Rep : public KVRClass<"KVRModelerTestRep"> {};
class PipeRep : public KVRClass<"KVRModelerTestPipeRep", Rep>, public KVRITestName {
public:
    const char* Name() override { return "pipe"; }
    std::function<void(PipeRep&)> whenDestroyed;
    Destruction destruction{"pipe"};
    ~PipeRep() override {
        if (whenDestroyed) whenDestroyed(*this);
    }
};
class WallRep : public KVRClass<"KVRModelerTestWallRep", Rep> {};

class RepShape : public KVRClass<"KVRModelerTestRepShape", KVRITestShape> {
public:
    int CornerCount() override { return 3; }
    Destruction destruction{"shape"};
};
class WallShape : public KVRClass<"KVRModelerTestWallShape", RepShape> {
public:
    int CornerCount() override { return 4; }
};

class KVR_EXPORT Hits : public KVRInterface<"KVRModelerTestHits"> {
public:
    virtual int Hit() = 0;
};
class KVR_EXPORT Notes : public KVRInterface<"KVRModelerTestNotes"> {
public:
    virtual int Note() = 0;
};

// Keeps state with its object.
class RepHits : public KVRClass<"KVRModelerTestRepHits", Hits> {
public:
    int Hit() override { return ++m_hits; }
    Destruction destruction{"hits"};

private:
    int m_hits = 0;
};

// Uses its object, and what else extends it, when it is destroyed.
class RepNotes : public KVRClass<"KVRModelerTestRepNotes", Notes> {
public:
    static inline std::string seen;
    int Note() override { return 0; }
    ~RepNotes() override {
        const KVRVar<KVRBaseUnknown> self(GetImpl());
        const auto name = KVRQuery<KVRITestName>(self);
        seen = name ? name->Name() : "-";
        seen += KVRQuery<Hits>(self) ? " hits" : " -";            // made earlier: still there
        seen += KVRQuery<KVRITestShape>(self) ? " shape" : " -";  // would have to be made
    }
};

class Throwing : public KVRClass<"KVRModelerTestThrowing", KVRITestNobody> {
public:
    Throwing() { throw std::runtime_error("no"); }
    void Never() override {}
};
class OutOfMemory : public KVRClass<"KVRModelerTestOutOfMemory", KVRITestNobody> {
public:
    OutOfMemory() { throw std::bad_alloc(); }
    void Never() override {}
};
class PoorRep : public KVRClass<"KVRModelerTestPoorRep", Rep> {};
class OddRep : public KVRClass<"KVRModelerTestOddRep", Rep> {};

class LateObject : public KVRBaseUnknown {
public:
    explicit LateObject(const char* type)
        : m_type(&KVRMetaClass::Define(type, "KVRModelerTestRep")) {}
    const KVRMetaClass& GetMetaObject() const override { return *m_type; }

private:
    const KVRMetaClass* m_type;
};

}  // namespace

KVR_DECLARE_TIE(KVRITestShape, RepShape);
KVR_TIE(KVRITestShape, RepShape, "KVRModelerTestRep");
KVR_DECLARE_TIE(KVRITestShape, WallShape);
KVR_TIE(KVRITestShape, WallShape, "KVRModelerTestWallRep", "KVRModelerTestLateWall");
KVR_DATA_EXTENSION(Hits, RepHits, "KVRModelerTestRep");
KVR_DATA_EXTENSION(Notes, RepNotes, "KVRModelerTestRep");
KVR_DATA_EXTENSION(KVRITestNobody, Throwing, "KVRModelerTestOddRep");
KVR_DATA_EXTENSION(KVRITestNobody, OutOfMemory, "KVRModelerTestPoorRep");
KVR_COMPONENT(PipeRep);
KVR_COMPONENT(Throwing);
KVR_COMPONENT(OutOfMemory);

namespace {

class KVRModelerTest : public testing::Test {
protected:
    KVRModelerTest() { g_destroyed.clear(); }

    KVRVar<PipeRep> m_pipe = KVRVar<PipeRep>::Adopt(new PipeRep);
};

using Names = std::vector<std::string>;

}  // namespace

TEST_F(KVRModelerTest, object_lives_until_its_last_release) {
    EXPECT_EQ(m_pipe->AddRef(), 2U);
    EXPECT_EQ(m_pipe->Release(), 1U);
    EXPECT_EQ(g_destroyed, Names{});
    EXPECT_EQ(m_pipe.Detach()->Release(), 0U);
    EXPECT_EQ(g_destroyed, Names{"pipe"});
}

TEST_F(KVRModelerTest, copy_is_a_new_object_with_one_reference) {
    m_pipe->AddRef();
    const auto* copy = new WallRep(WallRep());
    EXPECT_EQ(copy->AddRef(), 2U);
    copy->Release();
    EXPECT_EQ(copy->Release(), 0U);
    WallRep assigned;
    assigned = WallRep();
    EXPECT_EQ(assigned.AddRef(), 2U);
    EXPECT_EQ(m_pipe->Release(), 1U);
}

TEST_F(KVRModelerTest, own_interface_is_found_and_counted) {
    void* out = nullptr;
    ASSERT_EQ(m_pipe->QueryInterface(KVRIidOf<KVRITestName>(), &out), S_OK);
    auto* name = static_cast<KVRITestName*>(out);
    EXPECT_STREQ(name->Name(), "pipe");
    EXPECT_EQ(name->Release(), 1U);
}

TEST_F(KVRModelerTest, query_clears_the_output_when_nothing_answers) {
    void* out = this;
    EXPECT_EQ(m_pipe->QueryInterface(KVRIidOf<KVRITestNobody>(), &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(m_pipe->QueryInterface(KVRIidOf<KVRITestName>(), nullptr), E_INVALIDARG);
    EXPECT_FALSE(KVRQuery<KVRITestName>(static_cast<KVRBaseUnknown*>(nullptr)));
}

TEST_F(KVRModelerTest, adapter_whose_creation_fails_gives_a_status) {
    void* out = this;
    EXPECT_EQ(KVRVar<OddRep>::Adopt(new OddRep)->QueryInterface(KVRIidOf<KVRITestNobody>(), &out),
              E_FAIL);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(KVRVar<PoorRep>::Adopt(new PoorRep)->QueryInterface(KVRIidOf<KVRITestNobody>(), &out),
              E_OUTOFMEMORY);
}

TEST_F(KVRModelerTest, tie_lives_with_its_pointers) {
    auto shape = KVRQuery<KVRITestShape>(m_pipe);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->CornerCount(), 3);
    EXPECT_EQ(KVRQuery<KVRITestShape>(m_pipe), shape);  // found again
    EXPECT_EQ(g_destroyed, Names{});
    shape.Reset();
    EXPECT_EQ(g_destroyed, Names{"shape"});
    EXPECT_EQ(m_pipe->AddRef(), 2U);  // nothing holds the object any more
    m_pipe->Release();
    EXPECT_TRUE(KVRQuery<KVRITestShape>(m_pipe));  // and another is made
}

TEST_F(KVRModelerTest, tie_holds_its_object) {
    auto shape = KVRQuery<KVRITestShape>(m_pipe);
    m_pipe.Reset();
    EXPECT_EQ(g_destroyed, Names{});
    EXPECT_STREQ(KVRQuery<KVRITestName>(shape)->Name(), "pipe");
    shape.Reset();
    EXPECT_EQ(g_destroyed, (Names{"shape", "pipe"}));
}

TEST_F(KVRModelerTest, all_interfaces_of_an_object_reach_each_other_and_are_equal) {
    const auto shape = KVRQuery<KVRITestShape>(m_pipe);
    const auto hits = KVRQuery<Hits>(shape);
    const auto name = KVRQuery<KVRITestName>(hits);
    ASSERT_TRUE(shape && hits && name);
    const std::vector<KVRBaseUnknown*> all = {m_pipe.Get(), shape.Get(), hits.Get(), name.Get()};
    const auto other = KVRVar<PipeRep>::Adopt(new PipeRep);
    for (auto* a : all) {
        EXPECT_EQ(a->GetImpl(), static_cast<KVRBaseUnknown*>(m_pipe.Get()));
        for (auto* b : all) {
            EXPECT_TRUE(KVRIsEqual(a, b));
            EXPECT_EQ(a->equal_to(*b), 1);
        }
        EXPECT_FALSE(KVRIsEqual(a, other.Get()));
        EXPECT_EQ(a->equal_to(*other.Get()), 0);
        EXPECT_FALSE(KVRIsEqual(a, nullptr));
    }
    EXPECT_FALSE(KVRIsEqual(nullptr, nullptr));
    EXPECT_STREQ(shape->IsA(), "KVRModelerTestRepShape");  // an adapter has a class of its own
}

TEST_F(KVRModelerTest, nearest_type_wins) {
    const auto wall = KVRVar<WallRep>::Adopt(new WallRep);
    EXPECT_EQ(KVRQuery<KVRITestShape>(wall)->CornerCount(), 4);
    EXPECT_EQ(KVRQuery<KVRITestShape>(m_pipe)->CornerCount(), 3);
}

TEST_F(KVRModelerTest, types_known_by_name_are_extended) {
    const auto plain = KVRVar<LateObject>::Adopt(new LateObject("KVRModelerTestLate"));
    const auto wall = KVRVar<LateObject>::Adopt(new LateObject("KVRModelerTestLateWall"));
    EXPECT_EQ(KVRQuery<KVRITestShape>(plain)->CornerCount(), 3);  // as its base
    EXPECT_EQ(KVRQuery<KVRITestShape>(wall)->CornerCount(), 4);   // by its own name
}

TEST_F(KVRModelerTest, creation_function_ties_any_object_to_its_class) {
    const auto wall = KVRVar<WallRep>::Adopt(new WallRep);
    const auto natural = KVRQuery<KVRITestShape>(wall);
    const auto forced = KVRVar<KVRBaseUnknown>::Adopt(CreateTIEKVRITestShapeRepShape(wall.Get()));
    ASSERT_TRUE(forced);
    EXPECT_EQ(dynamic_cast<KVRITestShape*>(forced.Get())->CornerCount(), 3);
    EXPECT_EQ(natural->CornerCount(), 4);
    EXPECT_TRUE(KVRIsEqual(forced.Get(), wall.Get()));
    const auto again = KVRVar<KVRBaseUnknown>::Adopt(CreateTIEKVRITestShapeWallShape(forced.Get()));
    EXPECT_EQ(dynamic_cast<KVRITestShape*>(again.Get()), natural.Get());
    EXPECT_EQ(CreateTIEKVRITestShapeRepShape(nullptr), nullptr);
    EXPECT_EQ(&TIEKVRITestShapeWallShape::MetaObject(), &WallShape::MetaObject());
}

TEST_F(KVRModelerTest, data_extension_keeps_its_state_and_lives_with_its_object) {
    EXPECT_EQ(KVRQuery<Hits>(m_pipe)->Hit(), 1);
    auto hits = KVRQuery<Hits>(m_pipe);
    EXPECT_EQ(hits->Hit(), 2);  // the same one, though nobody held it
    EXPECT_EQ(m_pipe->AddRef(), 3U);
    EXPECT_EQ(m_pipe->Release(), 2U);  // counted as its object
    m_pipe.Reset();
    EXPECT_EQ(hits->Hit(), 3);
    EXPECT_EQ(g_destroyed, Names{});
    hits.Reset();
    EXPECT_EQ(g_destroyed, (Names{"hits", "pipe"}));
}

TEST_F(KVRModelerTest, data_extension_may_use_its_object_when_it_is_destroyed) {
    KVRQuery<Hits>(m_pipe);
    KVRQuery<Notes>(m_pipe);
    RepNotes::seen.clear();
    m_pipe.Reset();
    EXPECT_EQ(RepNotes::seen, "pipe hits -");
    EXPECT_EQ(g_destroyed, (Names{"hits", "pipe"}));  // each once
}

TEST_F(KVRModelerTest, object_may_take_references_on_itself_while_it_is_destroyed) {
    bool answered = true;
    m_pipe->whenDestroyed = [&](PipeRep& dying) {
        const KVRVar<KVRBaseUnknown> self(&dying);
        answered = static_cast<bool>(KVRQuery<Hits>(self));
    };
    KVRQuery<Hits>(m_pipe);
    m_pipe.Reset();
    EXPECT_FALSE(answered);
    EXPECT_EQ(g_destroyed, (Names{"hits", "pipe"}));
}

TEST_F(KVRModelerTest, object_on_the_stack_loses_its_data_extensions) {
    {
        PipeRep onStack;
        EXPECT_EQ(KVRQuery<Hits>(&onStack)->Hit(), 1);
        EXPECT_TRUE(KVRQuery<KVRITestShape>(&onStack));
    }
    EXPECT_EQ(g_destroyed, (Names{"shape", "pipe", "hits"}));
}

TEST_F(KVRModelerTest, components_are_made_by_name) {
    void* out = nullptr;
    ASSERT_EQ(KVRInstantiateComponent("PipeRep", KVRIidOf<KVRITestName>(), &out), S_OK);
    auto* made = static_cast<KVRITestName*>(out);
    EXPECT_STREQ(made->Name(), "pipe");
    EXPECT_EQ(made->Release(), 0U);
    // Through an adapter as well.
    ASSERT_EQ(KVRInstantiateComponent("PipeRep", KVRIidOf<KVRITestShape>(), &out), S_OK);
    EXPECT_EQ(static_cast<KVRITestShape*>(out)->Release(), 0U);
}

TEST_F(KVRModelerTest, component_that_cannot_be_made_clears_the_output) {
    const auto status = [&](const char* name) {
        void* out = this;
        const HRESULT result = KVRInstantiateComponent(name, KVRIidOf<KVRITestNobody>(), &out);
        EXPECT_EQ(out, nullptr) << name;
        return result;
    };
    EXPECT_EQ(status("KVRNoSuchComponent"), E_FAIL);
    EXPECT_EQ(status(""), E_FAIL);
    EXPECT_EQ(status("PipeRep"), E_FAIL);  // does not answer
    EXPECT_EQ(status("Throwing"), E_FAIL);
    EXPECT_EQ(status("OutOfMemory"), E_OUTOFMEMORY);
    void* out = this;
    EXPECT_EQ(KVRInstantiateComponent(nullptr, KVRIidOf<KVRITestName>(), &out), E_INVALIDARG);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(KVRInstantiateComponent("PipeRep", KVRIidOf<KVRITestName>(), nullptr), E_INVALIDARG);
}

TEST_F(KVRModelerTest, first_registration_stays) {
    KVRModeler::BindComponent("PipeRep", &KVRMake<WallRep>);
    EXPECT_STREQ(KVRVar<KVRBaseUnknown>::Adopt(KVRModeler::Create("PipeRep"))->IsA(),
                 "KVRModelerTestPipeRep");
    KVRModeler::BindExtension(
        {KVRIidOf<KVRITestShape>(), KVRExtensionKind::Tie, &KVRMake<WallShape>},
        {"KVRModelerTestRep"});
    EXPECT_EQ(KVRQuery<KVRITestShape>(m_pipe)->CornerCount(), 3);
}

TEST_F(KVRModelerTest, handle_counts_references) {
    {
        const KVRVar<PipeRep> copy = m_pipe;
        const KVRVar<KVRBaseUnknown> base = copy;
        EXPECT_EQ(m_pipe->AddRef(), 4U);
        m_pipe->Release();
        KVRVar<PipeRep> moved = KVRVar<PipeRep>(copy);
        moved = *&moved;
        moved = KVRVar<PipeRep>();
        EXPECT_FALSE(moved);
    }
    EXPECT_EQ(m_pipe->AddRef(), 2U);
    m_pipe->Release();
    KVRListOfHandles list;
    list.Append(m_pipe);
    EXPECT_EQ(list.Locate(KVRVar<KVRBaseUnknown>(m_pipe)), 1);
    PipeRep* raw = m_pipe.Detach();
    EXPECT_FALSE(m_pipe);
    EXPECT_EQ(raw->Release(), 1U);
    list.RemoveAll();
    EXPECT_EQ(g_destroyed, Names{"pipe"});
}

TEST_F(KVRModelerTest, null_handle_throws_when_dereferenced) {
    const KVRVar<PipeRep> null;
    EXPECT_THROW(null->Name(), KVRNullHandleError);
    EXPECT_EQ(null.Get(), nullptr);
    EXPECT_NO_THROW(m_pipe->Name());
}
