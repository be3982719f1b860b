#include "engine/ParamUnit.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/ObjectKinds.h"

#include <cctype>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

constexpr double whole = 100.0, kilo = 1000.0;

bool startsWith(const std::string& text, const char* what) {
    return text.rfind(what, 0) == 0;
}

/// In small letters, with points for commas and without spaces.
std::string plain(const CStr& text) {
    std::string made;
    for (const char* c = text.asChar(); *c; c++)
        if (!std::isspace(static_cast<unsigned char>(*c)))
            made += *c == ',' ? '.' : char(std::tolower(static_cast<unsigned char>(*c)));
    return made;
}

} // namespace

const ParamUnit percentUnit{[](float share) { return asStr(asRound(double(share) * whole)) + "%"; },
                            [](double number) { return float(number / whole); }};
const ParamUnit switchUnit{
    [](float share) { return CStr(share >= ParamUnit::threshold ? "on" : "off"); },
    [](double number) { return number > 0.0 ? 1.0f : 0.0f; }};

const ParamUnit& unitOf(const CObject* target, int param) {
    const ParamUnit* unit = nullptr;
    // A component tells a parameter without being const, though it changes nothing.
    if (CComp* comp = asComp(const_cast<CObject*>(target))) unit = comp->paramUnit(param);
    if (asStrip(target)) unit = COutputChannel::paramUnit(param);
    return unit ? *unit : percentUnit;
}

std::optional<double> typedNumber(const CStr& text) {
    const std::string typed = plain(text);
    if (startsWith(typed, "on")) return 1.0;
    if (startsWith(typed, "off") || startsWith(typed, "c") || startsWith(typed, "<c")) return 0.0;
    if (startsWith(typed, "-inf")) return -std::numeric_limits<double>::infinity();
    const bool left = startsWith(typed, "l"), right = startsWith(typed, "r");
    const char* from = typed.c_str() + (left || right ? 1 : 0);
    char* end = nullptr;
    const double number = std::strtod(from, &end);
    if (end == from) return std::nullopt;
    return (left ? -number : number) * (*end == 'k' ? kilo : 1.0);
}
