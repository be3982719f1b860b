#include "base/GraphMark.h"

namespace {

thread_local const GraphMark* innermost = nullptr;

} // namespace

bool holdsGraph(const CObject* host) {
    for (const GraphMark* mark = innermost; mark; mark = mark->outer)
        if (mark->graph == host) return true;
    return false;
}

GraphMark::GraphMark(const CObject* host) : graph(host), outer(innermost) {
    innermost = this;
}

GraphMark::~GraphMark() {
    innermost = outer;
}
