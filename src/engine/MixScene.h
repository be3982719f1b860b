#pragma once

#include "base/CObject.h"
#include "engine/StoredValue.h"

#include <functional>
#include <vector>

class BlockView;
class CComp;
class COutputChannel;
class CQV;
class CStream;

/// What of a scene is brought back; bits.
enum ScenePart : int {
    sceneLevels = 1,   ///< fader, pan, trim
    sceneSwitches = 2, ///< mute and solo
    sceneEq = 4,
    sceneSends = 8,
    sceneInserts = 16, ///< whether they are on, and how much of them is heard
    sceneAll = 31,
};

/// A strip as scenes know it. Its level, pan and switches may be those of something that plays
/// through it alone.
struct SceneStrip {
    /// In files: the list, the component in it, the strip of that.
    struct Place {
        int list = -1, comp = -1, output = -1;
        bool operator==(const Place&) const = default;
    };
    COutputChannel* channel;
    Place place;
    StoredValue level, pan, mute, solo;
};

using VisitStrips = std::function<void(const SceneStrip& strip)>;

/// Visits strips that are no outputs of components: those of the project, or, with `held`, of an
/// object that its history holds, whose places mean nothing.
using InnerStrips = void (*)(CQV* host, CObject* held, const VisitStrips& visit);

/// A folder above enters what it has once, at start-up; entering it again does nothing.
void enterInnerStrips(InnerStrips strips);

/// How all strips of a project are set at a moment. Interface thread.
///
/// It knows its strips as long as they are in the project or in its history; the effects of a strip
/// by their places and names.
class CMixScene : public CObject {
public:
    CMixScene();

    /// Takes down the strips of the host's components and sends, and those within them.
    void take(CQV* host);
    /// Sets them so, as one step of this name; `only` these strips, or all where it is empty.
    void recall(CQV* host, int parts, const std::vector<COutputChannel*>& only,
                const CStr& title) const;
    /// A scene that tells the same, owned by the caller.
    CMixScene* copy() const;
    /// Lets go of strips that neither the project nor its history has.
    void keepTo(CQV* host);

    /// The payload of a block. Strips are named by their places in the project, so that they have
    /// to be there: `read` is followed by `bind` when they are. What does not fit ends the reading.
    void write(CStream* stream, CQV* host) const;
    void read(BlockView& body);
    void bind(CQV* host);

    int count() const { return int(strips.size()); } ///< strips

private:
    struct Insert {
        CStr name;
        double wet = 1.0, power = 1.0;
    };
    struct Strip {
        COutputChannel* channel = nullptr; ///< not owned; null before `bind`
        SceneStrip::Place place;           ///< in the file
        std::vector<double> numbers;       ///< in the order of the table of values
        std::vector<Insert> inserts;
    };
    static Strip taken(const SceneStrip& strip, int buses);
    static void set(const Strip& kept, const SceneStrip& strip, int parts);

    std::vector<Strip> strips;
};
