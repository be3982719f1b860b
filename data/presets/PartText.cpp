#include "data/presets/PartText.h"

#include "audiofiles/CSample.h"
#include "data/presets/SoundSample.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/Events.h"

namespace presets {

namespace {

constexpr int noteGap = 12;            ///< ticks by which notes are shorter than written
constexpr unsigned char stretched = 2; ///< `CAudioEvent::mode`

} // namespace

std::unique_ptr<CPart> notePart(const char* line) {
    auto part = std::make_unique<CMIDIPart>();
    EventCollector events;
    for (const LineNote& n : parseLine(line)) {
        CMIDIEvent* note = createMIDIEvent();
        note->data = asData(midiNoteOn, n.key, n.velocity);
        note->length = n.length * stepTicks - noteGap;
        events.add(n.step * stepTicks, note);
    }
    part->setEvents(events.takeList());
    part->length = lengthOf(line) * stepTicks;
    return part;
}

std::unique_ptr<CPart> drumPart(std::span<const DrumRow> rows) {
    auto part = std::make_unique<CDrumPart>();
    EventCollector hits;
    for (const DrumRow& row : rows) {
        int step = 0;
        for (; row.steps[step]; step++) {
            const int velocity = hitVelocity(row.steps[step]);
            if (velocity == 0) continue;
            CDrumEvent* hit = createDrumEvent();
            hit->sound = row.sound;
            hit->velocity = float(velocity) / 127.0f;
            hit->length = stepTicks;
            hits.add(step * stepTicks, hit);
        }
        part->length = step * stepTicks;
    }
    part->setEvents(hits.takeList());
    return part;
}

std::unique_ptr<CPart> soundPart(CSample* sample, int bars) {
    auto part = std::make_unique<CAudioPart>();
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->end = sample->frames - 1;
    event->mode = stretched;
    event->ticks = bars * barTicks;
    part->chs = sample->chs;
    part->length = event->ticks;
    part->addEvent(0, event);
    return part;
}

CSample* poolSample(CQV* host, const SoundLoop& loop) {
    std::vector<float> left, right;
    loop.make(loop, left, right);
    CSample* sample = sampleOf(CStr(loop.name) + ".wav", left, right);
    const GraphHold hold(host);
    host->samples.add(sample);
    return sample;
}

} // namespace presets
