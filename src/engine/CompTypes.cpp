#include "engine/CompTypes.h"

#include "engine/CComp.h"

namespace {

constexpr int numTypes = 256;
CompMaker makers[numTypes] = {};

} // namespace

void enterCompType(int type, CompMaker maker) {
    if (type >= 0 && type < numTypes) makers[type] = maker;
}

CComp* createComp(CQV* qv, unsigned char, unsigned char type) {
    return makers[type] ? makers[type](qv) : new CComp(qv);
}
