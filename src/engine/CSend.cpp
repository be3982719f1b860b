#include "engine/CSend.h"

#include "base/Numbers.h"
#include "engine/CIO.h"
#include "engine/ParamUnit.h"

CSend::CSend(CComp* owner, COutputChannel* from) : comp(owner), channel(from) {
    type = typeSend;
}

void CSend::setParam(int param, ToStore<float> value) {
    if (param == 0) level = fLimit(value, 0.0f, 1.0f);
}

float CSend::param(int index) const {
    return index == 0 ? float(level) : 0.0f;
}

CStr CSend::paramText(int index) const {
    return index == 0 ? percentUnit.text(level) : CStr();
}
