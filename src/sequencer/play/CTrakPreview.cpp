#include "sequencer/play/CTrakPreview.h"

#include "engine/CMIDIQ.h"
#include "engine/MidiBytes.h"

namespace {

constexpr int muteRequest = 0;

void send(CMIDIQ* queue, double frame, int message) {
    queue->insert(frame, message, eventMidi, 0.0f, 0, nullptr, nullptr);
    queue->hasData = 1.0f;
}

} // namespace

void CTrakPreview::addNote(int note, int velocity) {
    if (note < 0 || note > 127 || velocity < 1 || velocity > 127) return;
    requests.push(asData(midiNoteOn, note, velocity));
}

void CTrakPreview::mute() {
    requests.push(muteRequest);
}

void CTrakPreview::assignCh(int channel) {
    ch = channel >= 0 && channel < 16 ? channel : 0;
}

void CTrakPreview::process(CMIDIQ* queue, double ticks, double framesPerTick) {
    int request = muteRequest;
    while (requests.pop(request)) {
        if (!queue) continue;
        if (request == muteRequest)
            for (Note& note : notes) end(queue, note, 0.0);
        else
            start(queue, request | ch);
    }
    for (Note& note : notes) {
        if (!note.message) continue;
        if (!queue)
            note.message = 0;
        else if (note.ticksLeft < ticks)
            end(queue, note, note.ticksLeft * framesPerTick);
        else
            note.ticksLeft -= ticks;
    }
}

void CTrakPreview::start(CMIDIQ* queue, int message) {
    for (Note& note : notes) {
        if (note.message) continue;
        note = {message, noteTicks};
        send(queue, 0.0, message);
        return;
    }
}

void CTrakPreview::end(CMIDIQ* queue, Note& note, double frame) {
    if (!note.message) return;
    send(queue, frame, asData(note.message, asByte1(note.message), 0));
    note.message = 0;
}
