#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"
#include "modular/GraphLayout.h"

#include <unordered_map>
#include <vector>

class CComp;
class CIO;
class CObject;
class CQV;

/// The rows of ports, in the order in which they are hit.
/// A key is what compressors and gates of the component, or in its strips, follow.
enum class PortKind { midiIn, midiOut, audioIn, key, audioOut };

constexpr bool isOutput(PortKind kind) {
    return kind == PortKind::midiOut || kind == PortKind::audioOut;
}
constexpr bool isMidi(PortKind kind) {
    return kind == PortKind::midiIn || kind == PortKind::midiOut;
}
/// Whether a cable can join a port to another of this kind.
constexpr bool fits(PortKind a, PortKind b) {
    return isMidi(a) == isMidi(b) && isOutput(a) != isOutput(b);
}

/// The components of the host as boxes with their ports, and the cables between them: what the
/// canvas shows and what a pointer hits. At a zoom of 100 %, in pixels of the canvas. Interface
/// thread; of use until the lists of the graph change.
class GraphModel {
public:
    static constexpr int portSide = 8, portStep = 10;
    static constexpr int portsAbove = 12,
                         portsBelow = 4;                 ///< from the box to the ports' upper edges
    static constexpr int keysLeft = 12;                  ///< from the box to the left edges of keys
    static constexpr int boxWidth = 144, boxHeight = 40; ///< at least
    static constexpr int mostPlace = 32767;              ///< of a box

    struct Box {
        CComp* comp;
        CRect area;
        CPoint place; ///< of the component, wherever a drag shows the box
        int firstPort = 0, portCount = 0;
    };
    struct Port {
        CIO* io;
        int box;
        PortKind kind;
        CPoint corner;       ///< of its square
        bool stereo = false; ///< it carries two sides of sound
        CRect area() const {
            return asRect(corner.x, corner.y, corner.x + portSide, corner.y + portSide);
        }
        CPoint centre() const { return addPos(corner, asPoint(portSide / 2, portSide / 2)); }
    };
    struct Cable {
        CObject* cable; ///< CMIDICable or CAudioCable
        bool midi;
        int from, to;       ///< ports
        bool loops = false; ///< it closes a loop
    };

    std::vector<Box> boxes; ///< in the order of the host's list
    std::vector<Port> ports;
    std::vector<Cable> cables; ///< those of MIDI first, those to keys last

    GraphModel() = default;
    explicit GraphModel(CQV* host);

    /// Whether both show the same components, at the same places, with the same ports and cables.
    bool same(const GraphModel& other) const;
    /// Moves the selected boxes as a drag does, none below 0; from where their components are.
    void shiftSelected(CPoint by);
    CRect extent() const; ///< around everything, from (0, 0) on
    bool toKey(const Cable& cable) const { return ports[size_t(cable.to)].kind == PortKind::key; }
    bool joined(int port) const { return joinedPorts[size_t(port)]; } ///< a cable ends there

    int boxAt(CPoint at) const; ///< -1 for none
    int portAt(CPoint at) const;
    int cableAt(CPoint at, double reach) const; ///< the nearest within so many pixels
    /// Whether it shows a thing, which may be gone: it is only compared.
    bool has(const CObject* thing) const { return indexes.contains(thing); }
    /// The number of one, -1 for what it does not show.
    int boxOf(const CObject* comp) const { return indexOf(comp); }
    int portOf(const CObject* io) const { return indexOf(io); }
    int cableOf(const CObject* cable) const { return indexOf(cable); }
    /// The port that a cable from `port` takes if it is let go at a point: the nearest that fits,
    /// of another component. -1 without any.
    int portNear(int port, CPoint at) const;

    LayoutGraph layout() const; ///< for tidying, without cables to keys
    /// What a block has shown: whether a cable of sound closes a loop. True if that is new.
    bool noteLoop(int cable, bool closes);

private:
    int indexOf(const CObject* thing) const;
    void addBox(CComp* comp);
    void addCables(CComp* comp, bool midi);
    void addCable(CObject* cable, bool midi, const CIO* from, const CIO* to);
    void addKeys(CComp* comp);
    void addKeyCables(CComp* comp);
    void placePorts(int box);
    static bool takesKey(const Port& a, const Port& b);

    std::vector<bool> joinedPorts;
    std::unordered_map<const CObject*, int> indexes; ///< of components, ports and cables
};

/// The size of a component's box.
CPoint boxSize(const CComp* comp);
/// How a cable runs: a curve that leaves downwards and arrives from above.
struct CableCurve {
    /// `aside`: it arrives from the left.
    CableCurve(CPoint from, CPoint to, bool aside = false);
    struct Point {
        double x, y;
    };
    Point start, bend1, bend2, end;
    Point at(double share) const; ///< 0 to 1
    CRect bounds() const;
    double distance(CPoint to) const; ///< about
};
CableCurve curveOf(const GraphModel& model, const GraphModel::Cable& cable);
