#include "modular/MiniMap.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/DrawBatch.h"
#include "gui/GuiItem.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "modular/GraphEdits.h"
#include "modular/ModularView.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int inset = 4, keyStep = 48;
constexpr double frameShare = 0.14;

} // namespace

MiniMap::MiniMap(CWin* owner, ModularView& shown)
    : CCtrl(owner, "minimap", 0, 0, 1, int(mapHeight)), view(shown) {
    tabStop = true;
    spokenName = "Map of the graph";
    hint = "The whole graph: press or drag to see that place";
}

double MiniMap::scale() const {
    const CRect all = view.graph().extent();
    return std::min(double(width - 2 * inset) / asMax(all.right, view.width),
                    double(height - 2 * inset) / asMax(all.bottom, view.height));
}

CRect MiniMap::mapped(CRect r) const {
    const double s = scale();
    return asRect(inset + asInt(std::floor(r.left * s)), inset + asInt(std::floor(r.top * s)),
                  inset + asMax(asInt(std::ceil(r.right * s)), asInt(r.left * s) + 2),
                  inset + asMax(asInt(std::ceil(r.bottom * s)), asInt(r.top * s) + 2));
}

void MiniMap::paint(CGraphic* g, CRect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(clComps.fillCol, clientRect());
    {
        DrawBatch batch(g);
        const auto& graph = view.graph();
        for (const auto& cable : graph.cables) {
            const CPoint from = graph.ports[size_t(cable.from)].centre(),
                         to = graph.ports[size_t(cable.to)].centre();
            const double s = scale();
            batch.segment(cable.midi ? clCompsMidi.fillCol : clCompsAudio.fillCol,
                          asPoint(inset + asInt(from.x * s), inset + asInt(from.y * s)),
                          asPoint(inset + asInt(to.x * s), inset + asInt(to.y * s)));
        }
    }
    for (const auto& box : view.graph().boxes)
        g->fillRect(box.comp->hasFlag(compSelected) ? palette.accent : palette.dimText,
                    mapped(box.area));
    const double zoom = view.zoom();
    const CRect seen = mapped(asRect(asInt(view.scrollX / zoom), asInt(view.scrollY / zoom),
                                     asInt((view.scrollX + view.width) / zoom),
                                     asInt((view.scrollY + view.height) / zoom)));
    const CRect frame = intersect(seen, clientRect());
    fillAlpha(g, frame, palette.text, frameShare);
    g->frameRect(hasKeyFocus() ? palette.accent : palette.dimText, frame);
    g->frameRect(palette.frame, clientRect());
}

void MiniMap::centre(CPoint at) {
    const double s = scale(), zoom = view.zoom();
    view.scroll(asInt((at.x - inset) / s * zoom) - view.width / 2,
                asInt((at.y - inset) / s * zoom) - view.height / 2);
}

void MiniMap::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if ((btn & ~modDouble) != modLeft) return;
    before = asPoint(view.scrollX, view.scrollY);
    win->app->drag.start(this, this, asPoint(x, y), btn, 0);
}

void MiniMap::dragMove(const DragPoint& point) {
    centre(point.at);
}

void MiniMap::dragCancel() {
    view.scroll(before.x, before.y);
}

bool MiniMap::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (!(btn & modControl)) return false;
    static_cast<void>(x), static_cast<void>(y);
    return view.mouseWheel(view.width / 2, view.height / 2, btn, dy, dx);
}

bool MiniMap::keyDown(int key, int mods) {
    if (mods != 0) return false;
    const int dx = key == Key::keyLeft ? -keyStep : key == Key::keyRight ? keyStep : 0;
    const int dy = key == Key::keyUp ? -keyStep : key == Key::keyDown ? keyStep : 0;
    if (dx == 0 && dy == 0) return false;
    view.scroll(view.scrollX + dx, view.scrollY + dy);
    return true;
}

void MiniMap::describe(Description& d, int) const {
    d.role = Role::picture;
}
