#include "engine/ValueDoor.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"

#include <algorithm>
#include <cassert>
#include <utility>

void ValueDoor::begin(const CStr& title) {
    end();
    open = true;
    name = title;
}

template <class F>
void ValueDoor::change(const StoredValue& value, F&& write) {
    assert(isInterfaceThread());
    if (value.kind->prepare) value.kind->prepare(value.object, value.index);
    std::vector<Moved> moved;
    for (const StoredValue& part : value.parts()) moved.push_back({part, part.get()});
    write();
    std::erase_if(moved, [](const Moved& m) { return m.value.get() == m.before; });
    if (moved.empty()) return;
    qv->countChange();
    if (value.kind->param) {
        const ParamRef by{value.object, value.kind->param(value.index)};
        movedBy(by, paramShare(by.object, by.param)); // may make a step
    }
    for (const Moved& m : moved)
        if (std::ranges::find(entries, m.value, &Moved::value) == entries.end())
            entries.push_back(m);
    if (!open) settle();
}

void ValueDoor::touch(const ParamRef& by) {
    latest = by;
    touchCount++;
}

void ValueDoor::movedBy(const ParamRef& by, float share) {
    touch(by);
    qv->paramMoved(by.object, by.param, share);
}

void ValueDoor::set(const StoredValue& value, const Numbers& to) {
    if (running) end();
    change(value, [&] { value.set(to); });
}

void ValueDoor::setParam(CObject* target, int param, float share) {
    if (running) end();
    change(parameterOf(target, param), [&] { setParamShare(target, param, share); });
}

void ValueDoor::run(const StoredValue& value) {
    if (!running || !(*running == value)) {
        begin();
        running = value;
    }
    lastNudge = asTimeInMS();
}

void ValueDoor::nudge(const StoredValue& value, const Numbers& to) {
    run(value);
    change(value, [&] { value.set(to); });
}

void ValueDoor::nudgeParam(CObject* target, int param, float share) {
    const StoredValue value = parameterOf(target, param);
    run(value);
    change(value, [&] { setParamShare(target, param, share); });
}

void ValueDoor::end() {
    settle();
    open = false;
    name = CStr();
    running.reset();
}

void ValueDoor::cancel() {
    for (const Moved& m : entries) m.value.set(m.before);
    if (!entries.empty()) qv->countChange();
    entries.clear();
    end();
}

bool ValueDoor::moved() const {
    return std::ranges::any_of(entries, [](const Moved& m) { return m.value.get() != m.before; });
}

void ValueDoor::settle() {
    std::vector<Moved> done = std::exchange(entries, {});
    std::erase_if(done, [](const Moved& m) { return m.value.get() == m.before; });
    if (done.empty()) return;
    CUndo* take = qv->recUndo;
    CUndo* step = take ? take : qv->undoStart(name.empty() ? done.front().value.name() : name, qv);
    for (const Moved& m : done) step->asValue(m.value, m.before);
    if (!take) qv->undoEnd(step, false);
}

void ValueDoor::idle(int now) {
    if (running && now - lastNudge >= runMs) end();
}

void ValueDoor::forget(const CObject* object) {
    std::erase_if(entries, [object](const Moved& m) { return m.value.object == object; });
    if (running && running->object == object) running.reset();
    if (latest.object == object) latest = {};
}
