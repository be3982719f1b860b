#include "audiofiles/AudioImport.h"
#include "base/Paths.h"
#include "browser/BrowserTree.h"
#include "gui/Shapes.h"
#include "plugins/PluginFile.h"
#include "project/BringIn.h"

#include <initializer_list>

namespace {

using Points = std::initializer_list<CPath::Point>;

void addLine(CPath& path, CPoint corner, Points points, bool closed = false) {
    bool first = true;
    for (const CPath::Point& p : points) {
        if (first)
            path.moveTo(corner.x + p.x, corner.y + p.y);
        else
            path.lineTo(corner.x + p.x, corner.y + p.y);
        first = false;
    }
    if (closed) path.close();
}

enum class Icon { folder, wave, notes, clip, knob, plug, sheet, box, star, clock, disk, play };

Icon iconOfFile(const CStr& path) {
    const CStr ext = extractFileExt(path);
    if (sameText(ext, ".qv")) return Icon::sheet;
    if (PluginFile::isOne(path)) return Icon::plug;
    switch (songFileOf(path)) {
    case SongFile::audio:
        return Icon::wave;
    case SongFile::midi:
        return Icon::notes;
    case SongFile::clip:
        return Icon::clip;
    case SongFile::none:
        return Icon::sheet;
    default:
        return Icon::knob;
    }
}

Icon iconOf(const CTreeNode& node) {
    switch (node.kind) {
    case nodeFile:
        return iconOfFile(node.path);
    case nodePoolSample:
    case nodePool:
    case nodeSamples:
        return Icon::wave;
    case nodePluginFile:
    case nodePlugins:
        return Icon::plug;
    case nodeClips:
        return Icon::clip;
    case nodePresets:
        return Icon::knob;
    case nodeProjects:
        return Icon::sheet;
    case nodeFavourites:
        return Icon::star;
    case nodeRecent:
        return Icon::clock;
    case nodeDisks:
        return Icon::disk;
    case nodeComponents:
    case nodeComponent:
        return Icon::box;
    case nodeAction:
        return Icon::play;
    default:
        return Icon::folder;
    }
}

void addCircle(CPath& path, CPoint corner, double x, double y, double radius) {
    constexpr double turn = 6.28;
    path.moveTo(corner.x + x + radius, corner.y + y);
    path.arc(corner.x + x, corner.y + y, radius, 0, turn);
    path.close();
}

void outline(CPath& path, CPoint at, Icon icon) {
    switch (icon) {
    case Icon::folder:
        return addLine(path, at, {{2, 13}, {2, 4}, {6, 4}, {8, 6}, {14, 6}, {14, 13}}, true);
    case Icon::wave:
        for (const auto& [x, half] :
             {std::pair{3.0, 1.5}, {5.5, 4.0}, {8.0, 5.5}, {10.5, 2.5}, {13.0, 1.0}})
            addLine(path, at, {{x, 8 - half}, {x, 8 + half}});
        return;
    case Icon::notes:
        addLine(path, at, {{6, 12}, {6, 4}, {12, 3}, {12, 11}});
        addCircle(path, at, 4.5, 12, 1.5);
        return addCircle(path, at, 10.5, 11, 1.5);
    case Icon::clip:
        addLine(path, at, {{2, 4}, {14, 4}, {14, 12}, {2, 12}}, true);
        return addLine(path, at, {{4, 8}, {6, 6}, {8, 10}, {10, 7}, {12, 8}});
    case Icon::knob:
        addCircle(path, at, 8, 8, 5);
        return addLine(path, at, {{8, 8}, {8, 4}});
    case Icon::plug:
        addLine(path, at, {{4, 6}, {12, 6}, {12, 10}, {10, 12}, {6, 12}, {4, 10}}, true);
        addLine(path, at, {{6, 6}, {6, 3}});
        addLine(path, at, {{10, 6}, {10, 3}});
        return addLine(path, at, {{8, 12}, {8, 14}});
    case Icon::sheet:
        addLine(path, at, {{4, 2}, {10, 2}, {13, 5}, {13, 14}, {4, 14}}, true);
        return addLine(path, at, {{10, 2}, {10, 5}, {13, 5}});
    case Icon::box:
        addLine(path, at, {{3, 5}, {13, 5}, {13, 12}, {3, 12}}, true);
        addLine(path, at, {{1, 8}, {3, 8}});
        return addLine(path, at, {{13, 8}, {15, 8}});
    case Icon::star:
        return addLine(path, at,
                       {{8, 2},
                        {9.8, 6.2},
                        {14, 6.5},
                        {10.8, 9.3},
                        {11.8, 13.5},
                        {8, 11.2},
                        {4.2, 13.5},
                        {5.2, 9.3},
                        {2, 6.5},
                        {6.2, 6.2}},
                       true);
    case Icon::clock:
        addCircle(path, at, 8, 8, 5.5);
        return addLine(path, at, {{8, 4.5}, {8, 8}, {11, 9.5}});
    case Icon::disk:
        addLine(path, at, {{2, 5}, {14, 5}, {14, 11}, {2, 11}}, true);
        return addLine(path, at, {{10, 8}, {12, 8}});
    case Icon::play:
        return addLine(path, at, {{5, 3}, {12, 8}, {5, 13}}, true);
    }
}

} // namespace

void drawNodeIcon(CGraphic* g, const CTreeNode& node, CRect square, int color) {
    if (node.kind == nodeNote) return;
    constexpr double lineWidth = 1.3;
    CPath path;
    outline(path, asPoint(square.left, square.top), iconOf(node));
    strokePath(g, path, lineWidth, color);
}
