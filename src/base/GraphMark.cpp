#include "base/GraphMark.h"

namespace {

thread_local int depth = 0;

} // namespace

bool holdsGraph() {
    return depth > 0;
}

GraphMark::GraphMark() {
    ++depth;
}

GraphMark::~GraphMark() {
    --depth;
}
