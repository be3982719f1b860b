#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/LoopCalls.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "plugins/PluginComp.h"

#include <algorithm>
#include <utility>

// What a plug-in is answered, and how its wishes reach the interface thread.

double PluginComp::sampleRate() const {
    return double(host->rate);
}

int PluginComp::blockFrames() const {
    return host->frames;
}

PluginLevel PluginComp::level() const {
    if (rendering && heldByThread())
        return host->renderMode == 1 ? PluginLevel::offline : PluginLevel::realtime;
    return isInterfaceThread() ? PluginLevel::interface : PluginLevel::other;
}

void PluginComp::parameterMoved(int index, float share) {
    if (quiet || !plugin) return;
    share = fLimit(share, 0.0f, 1.0f);
    if (isInterfaceThread() && !rendering)
        tellMoved(index, share);
    else
        values.leave(index, share);
}

void PluginComp::parameterDrifted(int index, float share) {
    if (!quiet) values.leave(index, fLimit(share, 0.0f, 1.0f));
}

/// Moves that follow each other without a gesture of the plug-in's own are one step, as turns of a
/// wheel.
void PluginComp::tellMoved(int index, float share) {
    telling = true;
    const StoredValue value = parameterOf(this, index);
    if (gestures > 0 && host->values->dragging())
        host->values->setParam(this, index, share);
    else
        host->values->nudge(value, double(share));
    telling = false;
}

void PluginComp::gestureBegins(int) {
    if (!isInterfaceThread() || rendering || gestures++ > 0) return;
    host->values->begin();
}

void PluginComp::gestureEnds(int) {
    if (!isInterfaceThread() || rendering || gestures == 0 || --gestures > 0) return;
    if (host->values->dragging()) host->values->end();
}

void PluginComp::sendMidi(int frame, int data) {
    COutputPort* port = static_cast<COutputPort*>(outPorts.items(0));
    if (!rendering || !heldByThread() || !port) return;
    port->insert(std::clamp(pieceStart + frame, 0, host->frames - 1), data, eventMidi, 0.0f, 0,
                 nullptr, nullptr);
}

void PluginComp::sizeEditor(CPoint size) {
    askedSize = int64_t(unsigned(size.x)) << 32 | int64_t(unsigned(size.y));
}

std::optional<CPoint> PluginComp::takeAskedSize() {
    const int64_t asked = askedSize.exchange(-1);
    if (asked < 0) return std::nullopt;
    return asPoint(int(asked >> 32), int(unsigned(asked)));
}

void PluginComp::idleEditor() {
    if (!isInterfaceThread()) {
        editorIdleAsked = true;
    } else if (editorOpen) {
        plugin->idleEditor();
        loopCalls().idle();
    }
}

// Of a plug-in that runs in another process.

unsigned PluginComp::blockNumber() const {
    return host->blocks;
}

void PluginComp::betweenBlocks(const std::function<void()>& change) {
    const PluginHold hold(claim);
    change();
}

void PluginComp::pluginReturned() {
    {
        const PluginHold hold(claim);
        plugin->setRate(sampleRate());
        plugin->setBlock(blockFrames());
    }
    giveState();
    const PluginHold hold(claim);
    if (running) plugin->setRunning(true);
    notices.raise(CompNotice::program);
}

/// What has come since from threads that may not act on it themselves.
void PluginComp::serveRequests() {
    values.takeLeft([this](int index, float share) {
        values.keep(index, share);
        host->addMap(this, index, share);
    });
    if (editorIdleAsked.exchange(false)) idleEditor();
    if (displayAsked.exchange(false)) wholeChanged();
    if (channelsAsked.exchange(false)) rebuildChannels();
}

/// Programs, names or many values are others.
void PluginComp::wholeChanged() {
    values.follow(*plugin);
    const int now = getProg();
    if (pendingProg < 0 && now >= 0 && now < numProgs()) curProg = now;
    notices.raise(CompNotice::program);
}
