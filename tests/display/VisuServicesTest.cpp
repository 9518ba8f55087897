#include "RenderingBase/KVRRbaModel.m/src/DisplayQueries.h"
#include "RenderingBase/host/visu/KVRGraphicCard.h"
#include "RenderingBase/public/KVRRbaVisuServices.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

using Unit = KVRVar<KVRICkeUnit>;
using Magnitude = KVRVar<KVRICkeMagnitude>;

/// A magnitude that is equal to what it is told to be.
class LooseMagnitude : public KVRClass<"LooseMagnitude", KVRICkeMagnitude> {
public:
    explicit LooseMagnitude(const char* equal) : m_equal(equal) {}
    KVRUnicodeString GetName() const override { return "LENGTH"; }
    int IsEqual(const KVRICkeMagnitude* other) const override {
        return other && other->GetName() == m_equal ? 42 : 0;
    }

private:
    KVRUnicodeString m_equal;
};

/// A unit of a host's client.
class LooseUnit : public KVRClass<"LooseUnit", KVRICkeUnit> {
public:
    explicit LooseUnit(KVRICkeMagnitude* magnitude) : m_magnitude(magnitude) {}
    KVRUnicodeString GetSymbol() const override { return "loose"; }
    KVRICkeMagnitude* GetMagnitude() const override { return Magnitude(m_magnitude).Detach(); }
    double GetFactor() const override { return 1; }
    double ToSi(double value) const override { return value; }
    double FromSi(double value) const override { return value; }

private:
    Magnitude m_magnitude;
};

/// A type of parameters of a host's client.
class WarmthType : public KVRClass<"WarmthType", KVRICkeParmType> {
public:
    KVRUnicodeString Name() const override { return "WARMTH"; }
};

TEST(VendorWord, follows_the_vendor_id) {
    EXPECT_STREQ(rb::vendorWord(0x10DE), "nvidia");
    EXPECT_STREQ(rb::vendorWord(4318), "nvidia");
    EXPECT_STREQ(rb::vendorWord(0x1002), "amd");
    EXPECT_STREQ(rb::vendorWord(4098), "amd");
    EXPECT_STREQ(rb::vendorWord(0x8086), "intel");
    EXPECT_STREQ(rb::vendorWord(32902), "intel");
}

TEST(VendorWord, is_other_for_every_other_id) {
    for (const unsigned id : {0x1234U, 0U, 0x10DFU, 0x1001U, 0x18086U, 0xFFFFFFFFU})
        EXPECT_STREQ(rb::vendorWord(id), "other") << id;
}

TEST(VisuServices, vendor_is_the_word_for_the_adapter_of_this_machine) {
    KVRString vendor("old");
    EXPECT_EQ(KVRRbaVisuServices::GetGraphicCardVendor(vendor), 0);
    EXPECT_STREQ(vendor.CastToCharPtr(), rb::vendorWord(KVRGetGraphicCardVendorID()));
}

TEST(VisuServices, units_of_length_and_no_others_are_metric) {
    const std::set<std::string> lengths = {"m",  "km", "dm", "cm", "mm", "um",
                                           "nm", "in", "ft", "yd", "mi", "nmi"};
    std::set<std::string> metric;
    for (const Unit& unit : KVRParmDictionary::ListUnits())
        if (KVRRbaVisuServices::IsMetricUnit(*unit.Get())) metric.emplace(unit->GetSymbol().View());
    EXPECT_EQ(metric, lengths);
    const auto degree = Unit::Adopt(KVRParmDictionary::FindUnit("deg"));
    EXPECT_FALSE(KVRRbaVisuServices::IsMetricUnit(*degree.Get()));
}

TEST(VisuServices, unit_without_magnitude_is_not_metric) {
    LooseUnit unit(nullptr);
    EXPECT_FALSE(KVRRbaVisuServices::IsMetricUnit(unit));
}

TEST(VisuServices, comparison_is_that_of_the_units_magnitude) {
    const auto equal = Magnitude::Adopt(new LooseMagnitude("LENGTH"));
    LooseUnit metric(equal.Get());
    EXPECT_TRUE(KVRRbaVisuServices::IsMetricUnit(metric));
    const auto different = Magnitude::Adopt(new LooseMagnitude("AREA"));
    LooseUnit other(different.Get());
    EXPECT_FALSE(KVRRbaVisuServices::IsMetricUnit(other));
}

TEST(VisuServices, references_are_given_back) {
    const auto magnitude = Magnitude::Adopt(new LooseMagnitude("LENGTH"));
    {
        LooseUnit unit(magnitude.Get());
        for (int i = 0; i < 3; ++i) KVRRbaVisuServices::IsMetricUnit(unit);
    }
    EXPECT_EQ(magnitude->AddRef(), 2U);
    EXPECT_EQ(magnitude->Release(), 1U);
    const auto length = Magnitude::Adopt(KVRParmDictionary::FindMagnitude("LENGTH"));
    const auto metre = Unit::Adopt(KVRParmDictionary::FindUnit("m"));
    const unsigned before = length->AddRef();
    KVRRbaVisuServices::IsMetricUnit(*metre.Get());
    EXPECT_EQ(length->Release(), before - 1);
}

TEST(Measures, type_that_is_missing_raises_the_null_handle_error) {
    const auto metre = Unit::Adopt(KVRParmDictionary::FindUnit("m"));
    EXPECT_THROW(rb::measures(*metre.Get(), KVRParmType()), KVRNullHandleError);
    LooseUnit without(nullptr);
    EXPECT_THROW(rb::measures(without, KVRParmType()), KVRNullHandleError);
}

TEST(Measures, type_without_a_magnitude_in_the_dictionary_is_measured_by_nothing) {
    const auto warmth = KVRParmType::Adopt(new WarmthType);
    const auto metre = Unit::Adopt(KVRParmDictionary::FindUnit("m"));
    EXPECT_FALSE(rb::measures(*metre.Get(), warmth));
    EXPECT_TRUE(rb::measures(*metre.Get(), KVRParmDictionary::LengthType));
}

}  // namespace
