#include "modular/BoxDrags.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/ModularView.h"

#include <algorithm>
#include <cstdlib>

namespace {

CPoint minus(CPoint a, CPoint b) {
    return asPoint(a.x - b.x, a.y - b.y);
}

bool has(const std::vector<CComp*>& comps, const CComp* comp) {
    return std::ranges::find(comps, comp) != comps.end();
}

} // namespace

// Selecting.

BandDrag::BandDrag(ModularView& over, CPoint at, bool adds)
    : view(over), original(selectedComps(over.host())), start(over.toGraph(at)) {
    if (adds) kept = original;
    select({});
}

void BandDrag::select(CRect meets) {
    for (const auto& box : view.graph().boxes)
        box.comp->setFlag(compSelected, has(kept, box.comp) || !intersect(box.area, meets).empty());
    view.redraw();
}

void BandDrag::dragMove(const DragPoint& point) {
    const CPoint at = view.toGraph(point.at);
    const CRect area = asRect(asMin(start.x, at.x), asMin(start.y, at.y), asMax(start.x, at.x) + 1,
                              asMax(start.y, at.y) + 1);
    if (at == start) return;
    view.showBand(area);
    select(area);
}

void BandDrag::dragEnd(const DragPoint&) {
    view.showBand({});
}

void BandDrag::dragCancel() {
    view.showBand({});
    kept = original;
    select({});
}

CPoint BandDrag::dragScroll(CPoint by) {
    return view.scrollBy(by);
}

// Moving.

BoxDrag::BoxDrag(ModularView& over, CPoint at, bool pulls)
    : view(over), start(over.toGraph(at)), pullsOut(pulls) {
}

CPoint BoxDrag::shift(const DragPoint& point) const {
    return minus(view.toGraph(point.at), start);
}

/// A cable that the only selected box would come into.
int BoxDrag::cableUnder() const {
    const std::vector<CComp*> comps = selectedComps(view.host());
    if (comps.size() != 1 || canPullOut(view.host(), comps.front())) return -1;
    const GraphModel& graph = view.graph();
    const CRect& area = graph.boxes[size_t(graph.boxOf(comps.front()))].area;
    const CPoint middle = asPoint((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    const int cable = graph.cableAt(middle, area.height() / 2.0);
    return cable >= 0 && fitsInto(comps.front(), graph.cables[size_t(cable)].cable) ? cable : -1;
}

void BoxDrag::dragMove(const DragPoint& point) {
    view.shiftSelected(shift(point));
    const int into = pullsOut ? -1 : cableUnder();
    view.showInto(into);
    view.tell(into >= 0  ? "Comes into the cable " + cableName(view.graph(), into)
              : pullsOut ? CStr("Is pulled out: what fed it feeds what it fed")
                         : CStr());
}

void BoxDrag::dragEnd(const DragPoint& point) {
    const CPoint by = shift(point);
    const int into = view.shownNow().intoCable;
    CObject* cable = into >= 0 ? view.graph().cables[size_t(into)].cable : nullptr;
    view.showInto(-1);
    view.tell("");
    if (by == asPoint(0, 0)) return;
    CQV* host = view.host();
    const std::vector<CComp*> comps = selectedComps(host);
    if (cable)
        insertComp(host, comps.front(), cable,
                   addPos(by, asPoint(comps.front()->posX, comps.front()->posY)));
    else if (pullsOut && comps.size() == 1 && canPullOut(host, comps.front()))
        pullOutComp(host, comps.front(), by);
    else
        moveComps(host, by);
    view.rebuild();
}

void BoxDrag::dragCancel() {
    view.showInto(-1);
    view.shiftSelected({});
    view.tell("");
}

CPoint BoxDrag::dragScroll(CPoint by) {
    return view.scrollBy(by);
}

// Copying.

CopyDrag::CopyDrag(ModularView& over, CPoint at) : view(over), start(over.toGraph(at)) {
}

CPoint CopyDrag::shift(const DragPoint& point) const {
    const CPoint by = minus(point.at, point.anchor);
    const bool far = std::abs(by.x) >= least || std::abs(by.y) >= least;
    return far ? minus(view.toGraph(point.at), start) : asPoint(0, 0);
}

void CopyDrag::dragMove(const DragPoint& point) {
    view.shiftSelected(shift(point));
}

void CopyDrag::dragEnd(const DragPoint& point) {
    const CPoint by = shift(point);
    view.shiftSelected({});
    if (by == asPoint(0, 0)) return;
    duplicateComps(view.host(), selectedComps(view.host()), by);
    view.rebuild();
}

void CopyDrag::dragCancel() {
    view.shiftSelected({});
}

CPoint CopyDrag::dragScroll(CPoint by) {
    return view.scrollBy(by);
}

// The menu.

void MenuPress::dragClick(const DragPoint& point) {
    const CPoint at = view.toGraph(point.at);
    if (view.onMenu) view.onMenu(at, view.itemAt(at));
}
