#include "engine/StoredValue.h"

#include "engine/CComp.h"
#include "engine/ObjectKinds.h"

namespace {

/// Calls `visit` with the target as the class that it is; those without parameters are left out.
template <class F>
void asTarget(CObject* target, F&& visit) {
    if (CComp* comp = asComp(target)) visit(comp);
    if (COutputChannel* strip = asStrip(target)) visit(strip);
    if (CSend* send = asSend(target)) visit(send);
}

CStr nameOf(CComp* c, int param) {
    return c->paramName(param);
}

CStr nameOf(COutputChannel*, int param) {
    return COutputChannel::paramName(param);
}

CStr nameOf(CSend*, int) {
    return "Send level";
}

} // namespace

CStr StoredValue::name() const {
    return kind->name ? CStr(kind->name) : paramTitle(object, kind->param(index));
}

std::vector<StoredValue> StoredValue::parts() const {
    std::vector<StoredValue> all;
    if (kind->parts) kind->parts(object, index, all);
    if (all.empty()) all.push_back(*this);
    return all;
}

void KeptValue::exchange() {
    const StoredValue::Numbers now = value.get();
    value.set(other);
    other = now;
}

float paramShare(const CObject* target, int param) {
    float share = 0.0f;
    // Components tell a parameter without being const, though they change nothing.
    asTarget(const_cast<CObject*>(target), [&](auto* t) { share = t->param(param); });
    return share;
}

void setParamShare(CObject* target, int param, ToStore<float> share) {
    asTarget(target, [&](auto* t) { t->setParam(param, share); });
}

CStr paramTitle(const CObject* target, int param) {
    CStr title;
    asTarget(const_cast<CObject*>(target), [&](auto* t) { title = nameOf(t, param); });
    return title;
}
