#include "engine/Macros.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
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

void takeRange(const MacroStyle& style, float low, float high) {
    const bool good = low >= 0.0f && low < high && high <= 1.0f;
    *style.low = good ? low : 0.0f;
    *style.high = good ? high : 1.0f;
}

} // namespace

bool hasMacros(const CComp& of) {
    return of.type == compSampler || of.type == compEffect || of.type == compVST;
}

StoredValue macroOf(CComp* of, int macro) {
    return {&kind, of, macro};
}

std::optional<MacroStyle> macroStyleOf(CComp& of, int macro) {
    auto* styled = dynamic_cast<StyledMacros*>(&of);
    return styled ? styled->macroStyle(macro) : std::nullopt;
}

void setMacroStyle(CComp& of, int macro, const CStr& name, float low, float high) {
    const std::optional<MacroStyle> style = macroStyleOf(of, macro);
    if (!style) return;
    CUndo* step = of.host->undoStart("Macro", &of);
    step->asName(style->name);
    step->asFloat(style->low);
    step->asFloat(style->high);
    *style->name = name;
    takeRange(*style, low, high);
    of.host->undoEnd(step, true);
}

bool anyMacroStyle(const std::function<MacroStyle(int)>& style) {
    for (int i = 0; i < CComp::macroCount; i++) {
        const MacroStyle s = style(i);
        if (!s.name->empty() || *s.low != 0.0f || *s.high != 1.0f) return true;
    }
    return false;
}

void writeMacroStyles(CStream* stream, const std::function<MacroStyle(int)>& style) {
    for (int i = 0; i < CComp::macroCount; i++) {
        const MacroStyle s = style(i);
        stream->writeStr(*s.name);
        stream->writeFloat(*s.low);
        stream->writeFloat(*s.high);
    }
}

void readMacroStyles(CStream& body, const std::function<MacroStyle(int)>& style) {
    for (int i = 0; i < CComp::macroCount && body.left() > 0; i++) {
        const MacroStyle s = style(i);
        *s.name = body.readStr();
        const float low = body.readFloat();
        takeRange(s, low, body.readFloat());
    }
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
