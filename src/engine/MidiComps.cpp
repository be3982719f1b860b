#include "engine/MidiComps.h"

#include "engine/MidiBytes.h"

CMIDIChs::CMIDIChs(CQV* root) : CComp(root) {
    type = compMIDIChs;
    id = "MIDI Chs";
    for (int ch = 0; ch < numChannels; ++ch) map[ch] = ch;
}

void CMIDIChs::init() {
    inPorts.add(new CInputPort(this));
    outPorts.add(new COutputPort(this));
}

void CMIDIChs::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    mergeMIDI(frames);
    CMIDIQ* in = inPort();
    CMIDIQ* out = outPort();
    if (!in || !out) return;
    constexpr int channelBits = 15;
    for (const CMIDIBytes* e = in->first(); e; e = e->next) {
        const int to = map[chByte(e->data)];
        if (to == -1) continue;
        // Also what is no channel message: its low bits are replaced alike.
        const int data = (e->data & ~channelBits) | (to & channelBits);
        out->push(e->time, data, e->kind, e->value, e->param, e->owner, e->extra);
    }
}

CKeyboard::CKeyboard(CQV* root) : CComp(root) {
    id = "Keyboard";
    editorStruct.left = editorStruct.top = 100;
    editorStruct.width = 480;
    editorStruct.height = 96;
}

void CKeyboard::init() {
    outPorts.add(new CMIDIQ(this));
}

void CKeyboard::process(int) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    CMIDIQ* out = outPort();
    int data = 0;
    while (keys.pop(data))
        if (out) out->addMidiEvent(0.0, data);
}
