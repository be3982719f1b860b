#include "plugins/lv2/Lv2Ports.h"

#include "base/Numbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/port-groups/port-groups.h>
#include <lv2/port-props/port-props.h>
#include <lv2/resize-port/resize-port.h>
#include <lv2/time/time.h>
#include <lv2/units/units.h>

namespace {

/// What stands behind a number; a unit that is not here tells its own symbol.
constexpr std::pair<const char*, const char*> unitSigns[] = {
    {LV2_UNITS__db, "dB"},
    {LV2_UNITS__hz, "Hz"},
    {LV2_UNITS__khz, "kHz"},
    {LV2_UNITS__mhz, "MHz"},
    {LV2_UNITS__ms, "ms"},
    {LV2_UNITS__s, "s"},
    {LV2_UNITS__min, "min"},
    {LV2_UNITS__pc, "%"},
    {LV2_UNITS__cent, "ct"},
    {LV2_UNITS__semitone12TET, "semitones"},
    {LV2_UNITS__oct, "oct"},
    {LV2_UNITS__bpm, "BPM"},
    {LV2_UNITS__beat, "beats"},
    {LV2_UNITS__bar, "bars"},
    {LV2_UNITS__degree, "degrees"},
    {LV2_UNITS__frame, "frames"},
    {LV2_UNITS__m, "m"},
    {LV2_UNITS__cm, "cm"},
    {LV2_UNITS__mm, "mm"},
    {LV2_UNITS__midiNote, ""},
    {LV2_UNITS__coef, ""}};

std::string stringOf(LilvNode* owned) {
    const Lilv<LilvNode> node(owned);
    const char* text = node ? lilv_node_as_string(node.get()) : nullptr;
    return text ? text : "";
}

float floatOf(const LilvNode* node, float missing) {
    if (!node || !(lilv_node_is_float(node) || lilv_node_is_int(node) || lilv_node_is_bool(node)))
        return missing;
    const float number = lilv_node_as_float(node);
    return std::isfinite(number) ? number : missing;
}

/// Asks about one port.
class PortFacts {
public:
    PortFacts(const Lv2World& w, const LilvPlugin* p, const LilvPort* of)
        : world(w), plugin(p), port(of) {}

    bool is(const char* kind) const { return lilv_port_is_a(plugin, port, world.node(kind).get()); }
    bool has(const char* property) const {
        return lilv_port_has_property(plugin, port, world.node(property).get());
    }
    bool supports(const char* event) const {
        return lilv_port_supports_event(plugin, port, world.node(event).get());
    }
    Lilv<LilvNode> get(const char* predicate) const {
        return Lilv<LilvNode>(lilv_port_get(plugin, port, world.node(predicate).get()));
    }
    bool isDesignated(const char* as) const {
        const auto told = get(LV2_CORE__designation);
        return told && lilv_node_equals(told.get(), world.node(as).get());
    }
    uint32_t index() const { return lilv_port_get_index(plugin, port); }

    const Lv2World& world;
    const LilvPlugin* plugin;
    const LilvPort* port;
};

std::string unitSign(const PortFacts& facts) {
    const auto unit = facts.get(LV2_UNITS__unit);
    if (!unit) return "";
    for (const auto& [uri, sign] : unitSigns)
        if (lilv_node_is_uri(unit.get()) && std::string(lilv_node_as_uri(unit.get())) == uri)
            return sign;
    const auto symbols = facts.world.all(unit.get(), LV2_UNITS__symbol);
    return symbols.empty() ? "" : symbols.front();
}

/// A property with a number as its value; its type is empty for others. Where that is a file,
/// `isFile`.
Lv2Ports::Param propertyOf(const Lv2World& world, const LilvNode* property, bool& isFile) {
    const auto told = [&](const char* predicate) {
        return Lilv<LilvNode>(
            lilv_world_get(world.get(), property, world.node(predicate).get(), nullptr));
    };
    const auto is = [kind = told(LILV_NS_RDFS "range")](const char* type) {
        return kind && std::string(lilv_node_as_string(kind.get())) == type;
    };
    Lv2Ports::Param p;
    p.symbol = lilv_node_as_uri(property);
    for (const char* type :
         {LV2_ATOM__Bool, LV2_ATOM__Int, LV2_ATOM__Long, LV2_ATOM__Float, LV2_ATOM__Double})
        if (is(type)) p.type = type;
    const auto name = told(LILV_NS_RDFS "label");
    p.name = name ? lilv_node_as_string(name.get()) : p.symbol;
    isFile = is(LV2_ATOM__Path);
    p.isSwitch = is(LV2_ATOM__Bool);
    p.range.whole = p.isSwitch || is(LV2_ATOM__Int) || is(LV2_ATOM__Long);
    p.range.low = double(floatOf(told(LV2_CORE__minimum).get(), 0.0f));
    p.range.high = double(floatOf(told(LV2_CORE__maximum).get(), 1.0f));
    p.usual = floatOf(told(LV2_CORE__default).get(), float(p.range.low));
    return p;
}

std::vector<std::pair<float, std::string>> namedValues(const PortFacts& facts) {
    const LilvPointList points(lilv_port_get_scale_points(facts.plugin, facts.port));
    std::vector<std::pair<float, std::string>> named;
    LILV_FOREACH(scale_points, i, points.get()) {
        const LilvScalePoint* point = lilv_scale_points_get(points.get(), i);
        const char* label = lilv_node_as_string(lilv_scale_point_get_label(point));
        named.emplace_back(floatOf(lilv_scale_point_get_value(point), 0.0f), label ? label : "");
    }
    std::ranges::sort(named);
    return named;
}

bool isWhole(const std::pair<float, std::string>& point) {
    return point.first == std::round(point.first);
}

/// Neighbours of one group are a pair.
void pairUp(std::vector<Lv2Ports::Pin>& pins, const std::vector<std::string>& groups) {
    for (size_t i = 0; i + 1 < pins.size(); i++) {
        if (groups[i].empty() || groups[i] != groups[i + 1]) continue;
        pins[i].pair = true;
        i++;
    }
}

std::vector<std::string> groupsOf(const Lv2World& world, const LilvPlugin* plugin,
                                  const std::vector<Lv2Ports::Pin>& pins) {
    std::vector<std::string> groups;
    for (const Lv2Ports::Pin& pin : pins) {
        const PortFacts facts(world, plugin, lilv_plugin_get_port_by_index(plugin, pin.port));
        const auto group = facts.get(LV2_PORT_GROUPS__group);
        groups.emplace_back(group ? lilv_node_as_string(group.get()) : "");
    }
    return groups;
}

} // namespace

CStr Lv2Ports::Param::text(float value) const {
    const auto near = std::ranges::min_element(
        points, {}, [value](const auto& point) { return std::fabs(point.first - value); });
    const float step = float(range.high - range.low) / 1000.0f;
    if (near != points.end() && std::fabs(near->first - value) <= step) return near->second.c_str();
    if (isSwitch) return value > 0.0f ? "On" : "Off";
    const bool large = std::fabs(value) >= 1000.0f;
    const CStr number =
        range.whole ? asStr(asRound(double(value))) : asStrFormat(value, large ? "%.0f" : "%.2f");
    return unit.empty() ? number : number + " " + unit.c_str();
}

bool Lv2Ports::read(const Lv2World& world, const LilvPlugin* plugin, double rate, CStr& why) {
    count = lilv_plugin_get_num_ports(plugin);
    for (uint32_t i = 0; i < count; i++) {
        if (readPort(world, plugin, lilv_plugin_get_port_by_index(plugin, i), rate)) continue;
        why = "It has a port of a kind that is not known.";
        return false;
    }
    readProperties(world, plugin);
    pairUp(audioIn, groupsOf(world, plugin, audioIn));
    pairUp(audioOut, groupsOf(world, plugin, audioOut));
    return true;
}

/// They stand behind the ports in the list of parameters.
void Lv2Ports::readProperties(const Lv2World& world, const LilvPlugin* plugin) {
    for (const Events& e : eventsIn)
        if (e.patches && (propertyPort < 0 || e.control)) propertyPort = int(e.port);
    if (propertyPort < 0) return;
    const LilvNodeList all(lilv_plugin_get_value(plugin, world.node(LV2_PATCH__writable).get()));
    LILV_FOREACH(nodes, i, all.get()) {
        const LilvNode* property = lilv_nodes_get(all.get(), i);
        if (!lilv_node_is_uri(property)) continue;
        bool isFile = false;
        Param p = propertyOf(world, property, isFile);
        if (isFile) files.push_back({p.symbol, p.name});
        if (!p.type.empty()) params.push_back(std::move(p));
    }
}

bool Lv2Ports::readPort(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port,
                        double rate) {
    const PortFacts facts(world, plugin, port);
    const bool input = facts.is(LV2_CORE__InputPort);
    if (facts.is(LV2_CORE__AudioPort))
        (input ? audioIn : audioOut).push_back({facts.index()});
    else if (facts.is(LV2_CORE__ControlPort))
        readControl(world, plugin, port, rate);
    else if (facts.is(LV2_CORE__CVPort))
        carriers.push_back(facts.index());
    else if (facts.is(LV2_ATOM__AtomPort))
        readEvents(world, plugin, port);
    else
        return facts.has(LV2_CORE__connectionOptional);
    return true;
}

void Lv2Ports::readControl(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port,
                           double rate) {
    const PortFacts facts(world, plugin, port);
    if (facts.is(LV2_CORE__OutputPort)) {
        shown.push_back(facts.index());
        if (facts.has(LV2_CORE__reportsLatency) || facts.isDesignated(LV2_CORE__latency))
            latencyPort = int(facts.index());
        return;
    }
    Param p;
    p.port = facts.index();
    p.symbol = lilv_node_as_string(lilv_port_get_symbol(plugin, port));
    p.name = stringOf(lilv_port_get_name(plugin, port));
    LilvNode *usual = nullptr, *low = nullptr, *high = nullptr;
    lilv_port_get_range(plugin, port, &usual, &low, &high);
    p.isSwitch = facts.has(LV2_CORE__toggled);
    const float scale = facts.has(LV2_CORE__sampleRate) ? float(rate) : 1.0f;
    p.range.low = double(floatOf(low, 0.0f) * scale);
    p.range.high = double(floatOf(high, 1.0f) * scale);
    p.usual = floatOf(usual, float(p.range.low) / scale) * scale;
    for (LilvNode* node : {usual, low, high}) lilv_node_free(node);
    p.points = namedValues(facts);
    const bool chosen = facts.has(LV2_CORE__enumeration) && std::ranges::all_of(p.points, isWhole);
    p.range.whole = p.isSwitch || facts.has(LV2_CORE__integer) || chosen;
    p.range.logarithmic =
        facts.has(LV2_PORT_PROPS__logarithmic) && p.range.low > 0.0 && p.range.high > p.range.low;
    p.unit = unitSign(facts);
    params.push_back(std::move(p));
}

void Lv2Ports::readEvents(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port) {
    constexpr uint32_t usualBytes = 16384, mostBytes = 1 << 22;
    const PortFacts facts(world, plugin, port);
    Events e;
    e.port = facts.index();
    const auto asked = facts.get(LV2_RESIZE_PORT__minimumSize);
    const float bytes = floatOf(asked.get(), 0.0f);
    e.bytes = uint32_t(std::clamp(bytes, float(usualBytes), float(mostBytes)));
    e.midi = facts.supports(LV2_MIDI__MidiEvent);
    e.position = facts.supports(LV2_TIME__Position);
    e.patches = facts.supports(LV2_PATCH__Message);
    e.control = facts.isDesignated(LV2_CORE__control);
    (facts.is(LV2_CORE__InputPort) ? eventsIn : eventsOut).push_back(e);
}

int Lv2Ports::paramOf(uint32_t port) const {
    const auto at = std::ranges::find(params, port, &Param::port);
    return at == params.end() || port == Param::noPort ? -1 : int(at - params.begin());
}

int Lv2Ports::paramOf(const std::string& symbol) const {
    const auto at = std::ranges::find(params, symbol, &Param::symbol);
    return at == params.end() ? -1 : int(at - params.begin());
}

bool Lv2Ports::hearsMidi() const {
    return std::ranges::any_of(eventsIn, &Events::midi);
}

bool Lv2Ports::isPlayed() const {
    return hearsMidi() && audioIn.empty() && !audioOut.empty();
}

bool Lv2Ports::sendsMidi() const {
    return std::ranges::any_of(eventsOut, &Events::midi);
}
