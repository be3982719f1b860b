#include "modular/CableDrag.h"

#include "engine/CIO.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/ModularView.h"

void CableDrag::dragMove(const DragPoint& point) {
    if (point.at == point.anchor) return;
    const GraphModel& graph = view.graph();
    const int to = graph.portNear(source, view.toGraph(point.at));
    if (to == view.shownNow().toPort && to >= 0) return;
    view.showLink(source, to);
    if (to < 0) return view.tell("There is no port that a cable from here fits");
    CIO *a = graph.ports[size_t(source)].io, *b = graph.ports[size_t(to)].io;
    const CStr verb = areJoined(a, b) ? "Parts " : "Joins ";
    view.tell(verb + fullPortName(graph, source) + " and " + fullPortName(graph, to) + " (" +
              portKindName(graph.ports[size_t(to)]) + ")");
}

void CableDrag::dragEnd(const DragPoint&) {
    const GraphModel& graph = view.graph();
    const int to = view.shownNow().toPort;
    CIO* a = graph.ports[size_t(source)].io;
    CIO* b = to >= 0 ? graph.ports[size_t(to)].io : nullptr;
    view.showLink(-1, -1);
    view.tell("");
    if (!b) return;
    toggleCable(a, b);
    view.rebuild();
}

void CableDrag::dragCancel() {
    view.showLink(-1, -1);
    view.tell("");
}

CPoint CableDrag::dragScroll(CPoint by) {
    return view.scrollBy(by);
}
