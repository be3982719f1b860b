#include "modular/GraphModel.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

constexpr unsigned selectedBit = 1; ///< of a component's flags
constexpr int margin = 48;          ///< of the plain, beyond what is on it
constexpr double leastBend = 18, mostBend = 120;
constexpr int curveSteps = 24; ///< of a distance

int portsAcross(const CComp* comp) {
    const int above = comp->inPorts.getCount() + comp->inputs.getCount();
    const int below = comp->outPorts.getCount() + comp->outputs.getCount();
    return asMax(above, below);
}

bool isStereo(const CIO* io) {
    if (io->category != categoryChannel) return false;
    const COutputChannel* strip = asStrip(io);
    return (strip ? strip->channels : asInput(io)->channels) > 1;
}

} // namespace

CPoint boxSize(const CComp* comp) {
    const int forPorts = (portsAcross(comp) - 1) * GraphModel::portStep + GraphModel::portSide;
    return asPoint(asMax(asMax(comp->iconW, int(GraphModel::boxWidth)), forPorts),
                   asMax(comp->iconH, int(GraphModel::boxHeight)));
}

GraphModel::GraphModel(CQV* host) {
    for (auto* comp : host->comps) addBox(comp);
    joinedPorts.assign(ports.size(), false);
    for (const bool midi : {true, false})
        for (auto* comp : host->comps) addCables(comp, midi);
    const std::vector<bool> loops = loopCables(layout());
    for (size_t i = 0; i < cables.size(); i++) cables[i].loops = loops[i];
    for (auto* comp : host->comps) addKeyCables(comp);
}

void GraphModel::addBox(CComp* comp) {
    const int box = int(boxes.size());
    const CPoint size = boxSize(comp);
    indexes[comp] = box;
    boxes.push_back({comp, asRect(comp->posX, comp->posY, comp->posX + size.x, comp->posY + size.y),
                     asPoint(comp->posX, comp->posY), int(ports.size()), 0});
    const auto add = [&](ListView<CIO> list, PortKind kind) {
        for (auto* io : list) {
            indexes[io] = int(ports.size());
            ports.push_back({io, box, kind, {}, isStereo(io)});
        }
    };
    add(comp->inPorts, PortKind::midiIn);
    add(comp->outPorts, PortKind::midiOut);
    add(comp->inputs, PortKind::audioIn);
    addKeys(comp);
    if (comp->type != compAudioOut) add(comp->outputs, PortKind::audioOut);
    boxes.back().portCount = int(ports.size()) - boxes.back().firstPort;
    placePorts(box);
}

/// Its own where it has one, and those of its strips that are in use.
void GraphModel::addKeys(CComp* comp) {
    const auto add = [this, comp](CComp* keyed) {
        CInputChannel& key = keyInputOf(keyed)->channel;
        indexes[&key] = int(ports.size());
        ports.push_back({&key, boxOf(comp), PortKind::key, {}, true});
    };
    if (offersKey(comp)) add(comp);
    comp->eachInsert([&](CComp* insert) {
        const CKeyInput* key = keyInputOf(insert);
        if (key && key->source()) add(insert);
    });
}

void GraphModel::placePorts(int index) {
    const Box& box = boxes[size_t(index)];
    int above = box.area.left, below = box.area.left, beside = box.area.top + portsBelow;
    for (int i = box.firstPort; i < box.firstPort + box.portCount; i++) {
        Port& port = ports[size_t(i)];
        if (port.kind == PortKind::key) {
            port.corner = asPoint(box.area.left - keysLeft, beside);
            beside += portStep;
            continue;
        }
        int& x = isOutput(port.kind) ? below : above;
        port.corner = asPoint(x, isOutput(port.kind) ? box.area.bottom + portsBelow
                                                     : box.area.top - portsAbove);
        x += portStep;
    }
}

void GraphModel::addCables(CComp* comp, bool midi) {
    if (midi)
        for (auto* cable : comp->midiCables) addCable(cable, midi, cable->fromPort, cable->toPort);
    else
        for (auto* cable : comp->audioCables)
            addCable(cable, midi, cable->fromChannel, cable->toChannel);
}

void GraphModel::addCable(CObject* cable, bool midi, const CIO* from, const CIO* to) {
    const int out = portOf(from), in = portOf(to);
    if (out < 0 || in < 0) return;
    indexes[cable] = int(cables.size());
    cables.push_back({cable, midi, out, in});
    joinedPorts[size_t(out)] = joinedPorts[size_t(in)] = true;
}

void GraphModel::addKeyCables(CComp* comp) {
    const auto add = [this](CComp* keyed) {
        CKeyInput* key = keyInputOf(keyed);
        if (!key) return;
        for (auto* cable : key->cables) {
            const size_t before = cables.size();
            addCable(cable, false, cable->fromChannel, cable->toChannel);
            if (cables.size() > before) cables.back().loops = keyWaitsForItself(keyed);
        }
    };
    add(comp);
    comp->eachInsert(add);
}

bool GraphModel::noteLoop(int cable, bool closes) {
    return std::exchange(cables[size_t(cable)].loops, closes) != closes;
}

bool GraphModel::same(const GraphModel& other) const {
    const auto box = [](const Box& a, const Box& b) {
        return a.comp == b.comp && a.place == b.place && a.area.width() == b.area.width() &&
               a.area.height() == b.area.height() && a.portCount == b.portCount;
    };
    const auto port = [](const Port& a, const Port& b) {
        return a.io == b.io && a.kind == b.kind && a.stereo == b.stereo;
    };
    const auto cable = [](const Cable& a, const Cable& b) {
        return a.cable == b.cable && a.from == b.from && a.to == b.to;
    };
    return std::ranges::equal(boxes, other.boxes, box) &&
           std::ranges::equal(ports, other.ports, port) &&
           std::ranges::equal(cables, other.cables, cable);
}

void GraphModel::shiftSelected(CPoint by) {
    for (size_t i = 0; i < boxes.size(); i++) {
        Box& box = boxes[i];
        if (!box.comp->hasFlag(selectedBit)) continue;
        const int x = asMinMax(box.comp->posX + by.x, 0, int(mostPlace));
        const int y = asMinMax(box.comp->posY + by.y, 0, int(mostPlace));
        box.area = asRect(x, y, x + box.area.width(), y + box.area.height());
        placePorts(int(i));
    }
}

CRect GraphModel::extent() const {
    CRect all = asRect(0, 0, 1, 1);
    for (const Box& box : boxes) all = unite(all, sizeRect(box.area, 0, 0, margin, margin));
    return all;
}

int GraphModel::boxAt(CPoint at) const {
    for (size_t i = 0; i < boxes.size(); i++)
        if (boxes[i].area.contains(at.x, at.y)) return int(i);
    return -1;
}

int GraphModel::portAt(CPoint at) const {
    for (size_t i = 0; i < ports.size(); i++)
        if (ports[i].area().contains(at.x, at.y)) return int(i);
    return -1;
}

int GraphModel::cableAt(CPoint at, double reach) const {
    int nearest = -1;
    for (size_t i = 0; i < cables.size(); i++) {
        const CableCurve curve = curveOf(*this, cables[i]);
        const int around = int(reach) + 1;
        if (!sizeRect(curve.bounds(), -around, -around, around, around).contains(at.x, at.y))
            continue;
        const double distance = curve.distance(at);
        if (distance > reach) continue;
        reach = distance;
        nearest = int(i);
    }
    return nearest;
}

int GraphModel::indexOf(const CObject* thing) const {
    const auto found = indexes.find(thing);
    return found == indexes.end() ? -1 : found->second;
}

/// Whether a cable that may lead to a key can do so.
bool GraphModel::takesKey(const Port& a, const Port& b) {
    const Port &from = isOutput(a.kind) ? a : b, &to = isOutput(a.kind) ? b : a;
    return to.kind != PortKind::key || mayKey(to.io->comp, asStrip(from.io));
}

int GraphModel::portNear(int port, CPoint at) const {
    const Port& source = ports[size_t(port)];
    int nearest = -1, least = 0;
    for (size_t i = 0; i < ports.size(); i++) {
        const Port& other = ports[i];
        if (other.box == source.box || !fits(source.kind, other.kind)) continue;
        if (!takesKey(source, other)) continue;
        const int distance = std::abs(at.x - portSide / 2 - other.corner.x) +
                             std::abs(at.y - portSide / 2 - other.corner.y);
        if (nearest >= 0 && distance >= least) continue;
        least = distance;
        nearest = int(i);
    }
    return nearest;
}

LayoutGraph GraphModel::layout() const {
    LayoutGraph graph;
    for (const Box& box : boxes) graph.boxes.push_back({box.area.width(), box.area.height()});
    for (const Cable& cable : cables) {
        if (toKey(cable)) break;
        const Port &from = ports[size_t(cable.from)], &to = ports[size_t(cable.to)];
        graph.cables.push_back({from.box, to.box,
                                from.centre().x - boxes[size_t(from.box)].area.left,
                                to.centre().x - boxes[size_t(to.box)].area.left});
    }
    return graph;
}

// Curves.

CableCurve::CableCurve(CPoint from, CPoint to, bool aside)
    : start{double(from.x), double(from.y)}, end{double(to.x), double(to.y)} {
    const double down = end.y - start.y;
    const double wish = down > 0 ? down * 0.5 : leastBend + std::abs(down) * 0.3;
    const double bend = std::clamp(wish, std::min(leastBend, std::abs(down) + 6), mostBend);
    bend1 = {start.x, start.y + bend};
    bend2 = aside ? Point{end.x - bend, end.y} : Point{end.x, end.y - bend};
}

CableCurve::Point CableCurve::at(double t) const {
    const double s = 1 - t;
    const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
    return {a * start.x + b * bend1.x + c * bend2.x + d * end.x,
            a * start.y + b * bend1.y + c * bend2.y + d * end.y};
}

/// That of the points that it is drawn from lies in their rectangle.
CRect CableCurve::bounds() const {
    const auto [left, right] = std::minmax({start.x, bend1.x, bend2.x, end.x});
    const auto [top, bottom] = std::minmax({start.y, bend1.y, bend2.y, end.y});
    return asRect(int(std::floor(left)), int(std::floor(top)), int(std::ceil(right)) + 1,
                  int(std::ceil(bottom)) + 1);
}

double CableCurve::distance(CPoint to) const {
    double least = 1e9;
    Point from = start;
    for (int i = 1; i <= curveSteps; i++) {
        const Point next = at(double(i) / curveSteps);
        const double dx = next.x - from.x, dy = next.y - from.y, length = dx * dx + dy * dy;
        const double along =
            length > 0 ? ((to.x - from.x) * dx + (to.y - from.y) * dy) / length : 0;
        const double t = std::clamp(along, 0.0, 1.0);
        least = std::min(least, std::hypot(from.x + t * dx - to.x, from.y + t * dy - to.y));
        from = next;
    }
    return least;
}

CableCurve curveOf(const GraphModel& model, const GraphModel::Cable& cable) {
    return {model.ports[size_t(cable.from)].centre(), model.ports[size_t(cable.to)].centre(),
            model.toKey(cable)};
}
