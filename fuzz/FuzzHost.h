#pragma once

#include "base/Messages.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "project/CompTable.h"

/// The host of a fuzzer: no settings file, every kind of component, questions answered as by
/// Escape, blocks of 64 frames. It lives as long as the process.
inline CQV* fuzzHost() {
    static CQV* host = [] {
        messageHooks().showMsg = [](CWin*, const CStr&, const CStr&, int flags) {
            return answerOfEscape(flags);
        };
        enterCompTypes();
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(64);
        qv->init();
        return qv;
    }();
    return host;
}

/// Plays blocks as the audio cycle would, without a device.
inline void playBlocks(CQV* host, int blocks) {
    const GraphHold hold(host);
    for (int i = 0; i < blocks; ++i) {
        host->prepare(host->frames);
        host->process(host->frames);
    }
}

/// Takes every step back and forgets them.
inline void takeAllBack(CQV* host) {
    while (host->undoIndex >= 0) {
        host->undoClicked();
        host->settle();
    }
    host->undoClear();
}
