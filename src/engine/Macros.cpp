#include "engine/Macros.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/CompTypes.h"

#include <algorithm>

namespace {

constexpr int leastParam = -2; ///< the share of an insert

CComp* comp(CObject* o) {
    return static_cast<CComp*>(o);
}

/// Components tell what they have without being const, though they change nothing.
CComp* comp(const CObject* o) {
    return comp(const_cast<CObject*>(o));
}

const StoredValue::Kind kind = {
    "Macro",
    [](const CObject* o, int i) { return StoredValue::Numbers{double(comp(o)->getMacroParam(i))}; },
    [](CObject* o, int i, const StoredValue::Numbers& to) {
        comp(o)->setMacroParam(i, asRound(to[0]));
    }};

} // namespace

bool hasMacros(const CComp& of) {
    return of.type == compSampler || of.type == compEffect || of.type == compVST;
}

StoredValue macroOf(CComp* of, int macro) {
    return {&kind, of, macro};
}

void writeMacros(CStream* stream, CComp& of) {
    if (std::ranges::all_of(of.macroParams, [](int param) { return param == -1; })) return;
    stream->writeId("macros", int(sizeof of.macroParams));
    for (const int param : of.macroParams) stream->writeInt(param);
}

MacroNumbers readMacros(CStream& body) {
    MacroNumbers numbers = noMacros();
    for (int& number : numbers)
        if (body.left() >= int64_t(sizeof(int))) number = std::max(leastParam, body.readInt());
    return numbers;
}

void takeMacros(CComp& to, const MacroNumbers& numbers) {
    for (int i = 0; i < CComp::macroCount; i++) to.setMacroParam(i, numbers[size_t(i)]);
}
