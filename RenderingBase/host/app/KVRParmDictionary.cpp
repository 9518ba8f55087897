#include "RenderingBase/host/app/KVRParmDictionary.h"

#include "RenderingBase/host/app/UnitTable.h"

namespace {

using rb::app::MagnitudeEntry;
using rb::app::UnitEntry;

template <class T>
T* withReference(T* object) {
    if (object) object->AddRef();
    return object;
}

class Magnitude final : public KVRClass<"KVRCkeMagnitude", KVRICkeMagnitude> {
public:
    explicit Magnitude(const char* name) : m_name(name) {}
    KVRUnicodeString GetName() const override { return m_name; }
    // By the name, which is the identity of a magnitude: one of another maker may be meant.
    int IsEqual(const KVRICkeMagnitude* other) const override {
        return other && other->GetName() == m_name ? 1 : 0;
    }

private:
    const KVRUnicodeString m_name;
};

class Unit final : public KVRClass<"KVRCkeUnit", KVRICkeUnit> {
public:
    Unit(const UnitEntry& entry, Magnitude& magnitude) : m_entry(entry), m_magnitude(magnitude) {}
    KVRUnicodeString GetSymbol() const override { return m_entry.symbol; }
    KVRICkeMagnitude* GetMagnitude() const override { return withReference(&m_magnitude); }
    double GetFactor() const override { return m_entry.numerator / m_entry.denominator; }
    double ToSi(double value) const override {
        return (value + m_entry.zero) * m_entry.numerator / m_entry.denominator;
    }
    double FromSi(double value) const override {
        return value * m_entry.denominator / m_entry.numerator - m_entry.zero;
    }

private:
    const UnitEntry& m_entry;
    Magnitude& m_magnitude;
};

class ParmType final : public KVRClass<"KVRCkeParmType", KVRICkeParmType> {
public:
    explicit ParmType(const char* name) : m_name(name) {}
    KVRUnicodeString Name() const override { return m_name; }

private:
    const KVRUnicodeString m_name;
};

struct Dictionary {
    std::vector<Magnitude*> magnitudes;
    std::vector<Unit*> units;

    Dictionary() {
        for (const MagnitudeEntry& entry : rb::app::magnitudeTable()) {
            magnitudes.push_back(new Magnitude(entry.name));
            for (const UnitEntry& unit : entry.units)
                units.push_back(new Unit(unit, *magnitudes.back()));
        }
    }
};

// Never destroyed, and with it one reference on each object: what is in static variables of others
// may hold units until the end.
const Dictionary& dictionary() {
    static const Dictionary& made = *new Dictionary;
    return made;
}

KVRVar<KVRICkeMagnitude> magnitudeOf(const KVRICkeUnit& unit) {
    return KVRVar<KVRICkeMagnitude>::Adopt(unit.GetMagnitude());
}

}  // namespace

// The maker's reference stays, for handles that are used after this one is destroyed.
const KVRParmType KVRParmDictionary::LengthType = new ParmType("LENGTH");

KVRICkeMagnitude* KVRParmDictionary::FindMagnitude(const KVRUnicodeString& name) {
    for (Magnitude* magnitude : dictionary().magnitudes)
        if (magnitude->GetName() == name) return withReference(magnitude);
    return nullptr;
}

KVRICkeUnit* KVRParmDictionary::FindUnit(const KVRUnicodeString& symbol) {
    for (Unit* unit : dictionary().units)
        if (unit->GetSymbol() == symbol) return withReference(unit);
    return nullptr;
}

std::vector<KVRVar<KVRICkeUnit>> KVRParmDictionary::ListUnits() {
    const auto& units = dictionary().units;
    return {units.begin(), units.end()};
}

HRESULT KVRParmDictionary::Convert(double value, const KVRICkeUnit& from, const KVRICkeUnit& to,
                                   double& result) {
    const auto magnitude = magnitudeOf(from);
    const auto other = magnitudeOf(to);
    if (!magnitude || magnitude->IsEqual(other.Get()) == 0) return E_INVALIDARG;
    result = &from == &to ? value : to.FromSi(from.ToSi(value));
    return S_OK;
}
