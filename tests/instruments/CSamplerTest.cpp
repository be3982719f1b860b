#include "SoundFixture.h"

#include "common/fx/CDelay.h"
#include "common/fx/CReverb.h"
#include "engine/CFreezeItem.h"
#include "engine/CUndo.h"
#include "engine/ValueDoor.h"
#include "support/RtTrap.h"

namespace {

constexpr int on = midiNoteOn, off = midiNoteOff, cc = midiController;

int sounding(const CSampler& s) {
    int n = 0;
    for (const CVoice& v : s.voices) n += v.state == CVoice::sounding;
    return n;
}

CVoice* voiceOf(CSampler& s, int note) {
    for (CVoice& v : s.voices)
        if (v.state == CVoice::sounding && v.note == note) return &v;
    return nullptr;
}

/// A sampler in the graph of a host, cabled to its output, with one synthesizer sound.
struct Linked {
    TestHost host{256};
    CSampler* sampler;
    CSynthProg* prog;
    COSCSound* sound;

    Linked() {
        sampler = new CSampler(host.host);
        prog = new CSynthProg(host.host, sampler);
        sound = new COSCSound(prog->addLayer(), host.host);
        prog->layer->addSound(sound);
        sampler->createChannels();
        sampler->createBuffers(host.host->frames);
        sampler->progs.add(prog);
        const GraphHold hold(host.host);
        host.host->comps.add(sampler);
        sampler->listKind = listComps;
        host.out->addAudioCable(sampler->output(), nullptr);
    }
    void key(int note, int velocity) { sampler->guiQueue.push(asData(on, note, velocity)); }
};

} // namespace

/// A component that hangs nowhere fills its voices from the front, a linked one from the back. What
/// finds no voice is dropped, and a voice in its tail ends the search.
TEST(CSampler, VoicesAreTakenInTheirOrder) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    b.event(asData(on, 60, 100));
    EXPECT_EQ(b.sampler.voices[0].note, 60);
    b.sampler.listKind = listComps;
    for (int i = 0; i < 64; i++) b.event(asData(on, 30 + i, 100));
    EXPECT_EQ(b.sampler.voices[63].note, 30);
    EXPECT_EQ(b.sampler.voices[62].note, 31);
    EXPECT_EQ(sounding(b.sampler), 64);
    EXPECT_EQ(voiceOf(b.sampler, 93), nullptr);

    b.sampler.voices[10].tail = 100;
    b.sampler.voices[40].state = CVoice::free;
    EXPECT_EQ(b.sampler.addVoice(s, asData(on, 100, 100), 0), nullptr);
    b.sampler.voices[5].state = CVoice::free;
    EXPECT_EQ(b.sampler.addVoice(s, asData(on, 100, 100), 0), &b.sampler.voices[5]);
}

TEST(CSampler, ZonesChooseTheSounds) {
    SoundBench b;
    COSCSound *low = b.addOsc(), *loud = b.addOsc(), *muted = b.addOsc();
    low->hiKey = 59;
    loud->lowVel = 100;
    muted->mute = 1;
    struct Case {
        int note, velocity, voices;
    };
    for (const Case& c : {Case{60, 50, 0}, {60, 100, 1}, {59, 127, 2}, {59, 99, 1}}) {
        b.sampler.allNotesOff();
        b.event(asData(on, c.note, c.velocity));
        EXPECT_EQ(sounding(b.sampler), c.voices) << c.note << " at " << c.velocity;
    }
}

TEST(CSampler, MonoSoundKeepsItsVoice) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->mode = soundMono;
    s->envelope[0]->attack = 0.1f;
    b.event(asData(on, 60, 100));
    CVoice* v = voiceOf(b.sampler, 60);
    b.render(v, 1000);
    b.event(asData(on, 67, 30));
    EXPECT_EQ(sounding(b.sampler), 1);
    EXPECT_EQ(v->note, 67);
    EXPECT_EQ(v->pitch, 67.0f);
    EXPECT_FLOAT_EQ(v->velocity, 100 / 127.0f);
    EXPECT_LT(v->stages[0].remaining, v->stages[0].total) << "the envelope goes on";
    b.event(asData(off, 60, 0));
    EXPECT_EQ(v->stages[0].stage, phaseAttack) << "the old note has no voice";
    b.event(asData(off, 67, 0));
    EXPECT_EQ(v->stages[0].stage, phaseRelease);
    b.event(asData(on, 72, 100));
    EXPECT_EQ(sounding(b.sampler), 1);
    EXPECT_EQ(v->stages[0].stage, phaseAttack) << "released, so it starts anew";
}

/// A poly sound glides too, from the last note played on it.
TEST(CSampler, GlidesFromTheLastNote) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->glide = 100;
    CVoice* first = b.play(s, 60);
    EXPECT_EQ(first->pitch, 60.0f);
    CVoice* second = b.play(s, 72);
    EXPECT_EQ(second->pitch, 60.0f);
    EXPECT_EQ(second->glideLeft, 4410);
    b.render(second, 2205);
    EXPECT_NEAR(double(second->pitch), 66, 0.01);
    b.render(second, 3000);
    EXPECT_NEAR(double(second->pitch), 72, 1e-3);
}

TEST(CSampler, GroupTakesItsVoiceOver) {
    SoundBench b;
    COSCSound *closed = b.addOsc(), *open = b.addOsc();
    closed->group = open->group = 2;
    closed->hiKey = 60;
    open->lowKey = 61;
    b.sampler.listKind = listComps;
    b.event(asData(on, 70, 100));
    const CVoice* v = voiceOf(b.sampler, 70);
    b.event(asData(on, 50, 100));
    EXPECT_EQ(sounding(b.sampler), 1);
    EXPECT_TRUE(v->note == 50 && v->sound == closed);
}

TEST(CSampler, ControllersBendAndParameters) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    CWavSound* wav = b.addWav(std::vector<float>(100, 0.0f));
    s->ccMap[74] = targetCutoff;
    s->ccMap[10] = targetPan;
    s->ccMap[12] = wav->ccMap[12] = targetDetune;
    s->ccMap[13] = targetPitch;
    b.event(asData(cc | 5, 74, 64));
    EXPECT_FLOAT_EQ(s->cutoff, 64 / 127.0f);
    EXPECT_EQ(float(wav->cutoff), 1.0f) << "has a map of its own";
    b.event(asData(cc, 10, 0));
    EXPECT_EQ(float(s->pan), -1.0f);
    b.event(asData(cc, 12, 127));
    EXPECT_EQ(float(s->detune), 1.0f);
    b.event(asData(cc, 13, 127));
    EXPECT_EQ(float(s->coarse), 0.0f);
    b.event(asData(midiPitchBend | 5, 0, 96));
    EXPECT_FLOAT_EQ(b.prog->bend[0], 0.5f) << "on any channel";
    EXPECT_EQ(float(b.prog->bend[5]), 0.0f);
    b.event(asData(on, 60, 100));
    b.event(asData(cc, ccAllNotesOff, 0));
    EXPECT_EQ(sounding(b.sampler), 0);
    b.sampler.setParam(74, 0.25f);
    EXPECT_EQ(float(s->cutoff), 0.25f);
    EXPECT_EQ(b.sampler.paramText(74), "0.25");
    for (int i : {-1, 128}) {
        b.sampler.setParam(i, 1.0f);
        EXPECT_EQ(b.sampler.paramText(i), "");
    }
}

/// While a pedal is down, keys of its channel sound on; one that is pressed again is the finger's.
TEST(CSampler, PedalHoldsTheKeysOfItsChannel) {
    SoundBench b;
    b.addOsc();
    const auto released = [&](int note) {
        return voiceOf(b.sampler, note)->stages[0].stage == phaseRelease;
    };
    b.event(asData(cc | 2, 64, 63));
    for (int note : {50, 51, 52, 53}) b.event(asData(on | 2, note, 100));
    b.event(asData(off | 2, 50, 0));
    EXPECT_TRUE(released(50)) << "not far enough down";
    b.event(asData(cc | 2, 64, 64));
    for (int note : {51, 52}) b.event(asData(off | 2, note, 0));
    b.event(asData(off | 3, 53, 0));
    EXPECT_TRUE(!released(51) && !released(52));
    EXPECT_TRUE(released(53)) << "another channel";
    b.event(asData(on | 2, 52, 100));
    b.event(asData(cc | 3, 64, 0));
    EXPECT_FALSE(released(51));
    b.event(asData(cc | 2, 64, 0));
    EXPECT_TRUE(released(51));
    EXPECT_FALSE(released(52));

    b.event(asData(cc | 2, 64, 127));
    b.event(asData(cc, ccAllNotesOff, 0));
    b.event(asData(on | 2, 60, 100));
    b.event(asData(off | 2, 60, 0));
    EXPECT_TRUE(released(60)) << "the pedal is up again";
}

/// Events act at their frame, those out of the block at its ends, foreign ones not at all.
TEST(CSampler, EventsAreSampleExact) {
    struct Case {
        double time;
        size_t first;
    };
    for (const Case& c : {Case{99.4, 99}, {99.5, 100}, {255, 255}, {-3, 0}}) {
        Linked l;
        const GraphMark mark(l.host.host);
        l.sound->filter = filterHigh; // passes the first frame undelayed
        l.sampler->prepare(256);
        l.sampler->inPort()->push(c.time, asData(on, 69, 127), eventMidi, 0, 0, nullptr, nullptr);
        l.sampler->process(256);
        const float* out = l.sampler->output()->bufL;
        size_t i = 0;
        while (i < 256 && out[i] == 0.0f) i++;
        // The sine starts at 0, so the first frame of the note is the one before.
        EXPECT_EQ(i, c.first + 1) << c.time;
    }
}

TEST(CSampler, HearsItsChannelAndItsParameters) {
    Linked l;
    const GraphMark mark(l.host.host);
    l.sound->ccMap[3] = targetQ;
    l.sampler->mch = 4;
    l.sampler->prepare(256);
    CMIDIQ* port = l.sampler->inPort();
    port->push(0, asData(on | 3, 60, 99), eventMidi, 0, 0, nullptr, nullptr);
    port->push(0, asData(on | 4, 62, 99), eventMidi, 0, 0, nullptr, nullptr);
    port->push(0, asData(on | 4, 64, 99), eventConsumed, 0, 0, nullptr, nullptr);
    port->push(1, 0, eventParam, 0.75f, 3, static_cast<CComp*>(l.sampler), nullptr);
    port->push(2, 0, eventParam, 0.5f, 3, l.sampler->output(), nullptr);
    l.sampler->process(256);
    EXPECT_EQ(sounding(*l.sampler), 1);
    EXPECT_NE(voiceOf(*l.sampler, 62), nullptr);
    EXPECT_EQ(float(l.sound->q), 0.75f) << "the second was for the strip";
}

/// Keys of the on-screen piano reach the voices, releases before presses.
TEST(CSampler, PlaysTheScreenPiano) {
    Linked l;
    int released[128] = {}, pressed[128] = {};
    pressed[60] = pressed[64] = 1;
    l.sampler->pianoKeys(released, pressed);
    l.host.run();
    EXPECT_EQ(sounding(*l.sampler), 2);
    EXPECT_FLOAT_EQ(voiceOf(*l.sampler, 60)->velocity, 80 / 127.0f);
    released[60] = 1;
    pressed[64] = 0;
    l.sampler->pianoKeys(released, pressed);
    l.host.run();
    EXPECT_EQ(sounding(*l.sampler), 3);
    EXPECT_EQ(voiceOf(*l.sampler, 64)->stages[0].stage, phaseSustain);
    l.host.run(20);
    EXPECT_EQ(sounding(*l.sampler), 2) << "released, through its tail";
}

TEST(CSampler, SendsFeedOnlyWhatIsOn) {
    struct Case {
        float send;
        int reverb;
        double part; ///< of the direct sound that the reverb gets
    };
    for (const Case& c : {Case{0, 1, 0}, {0.5f, 1, 0.5}, {0.5f, 0, 0}}) {
        Linked l;
        const GraphMark mark(l.host.host);
        l.sound->sends[0] = c.send;
        l.prog->reverb()->setEnabled(c.reverb);
        l.sampler->prepare(256);
        l.sampler->inPort()->addMidiEvent(0, asData(on, 60, 100));
        l.sampler->process(256);
        const float* in = l.prog->reverb()->bufL;
        const float* direct = l.sampler->output()->bufL;
        EXPECT_GT(std::fabs(direct[200]), 0.1f);
        EXPECT_NEAR(double(in[200]), c.part * double(direct[200]), 0.05);
    }
}

/// What leaves by an undoable step ends its voices on the way. A factory program that comes by one
/// becomes current, and its undo goes back to one that exists.
TEST(CSampler, StepsMuteWhatLeaves) {
    Linked l;
    auto* other = new COSCSound(l.prog->layer, l.host.host);
    l.prog->layer->addSound(other);
    l.key(60, 100);
    l.host.run();
    EXPECT_EQ(sounding(*l.sampler), 2);
    CUndo* step = l.host.host->undoStart("Delete", l.sampler);
    step->asRemove(other, &l.prog->layer->sounds)->tag = 6;
    l.host.host->undoEnd(step, false);
    l.host.run();
    EXPECT_EQ(sounding(*l.sampler), 1);
    EXPECT_EQ(voiceOf(*l.sampler, 60)->sound, l.sound);

    CStr name;
    step = l.host.host->undoStart("Add", l.sampler);
    l.sampler->factoryProg(step, 3, name, true);
    EXPECT_EQ(name, "Pads");
    l.host.host->undoEnd(step, false);
    l.host.run();
    EXPECT_EQ(int(l.sampler->curProg), 1);
    {
        const GraphHold hold(l.host.host);
        l.sampler->allNotesOff();
    }
    l.key(60, 100);
    l.host.run();
    EXPECT_GT(sounding(*l.sampler), 0);
    l.host.host->undoClicked();
    l.host.runUntil([&] { return l.sampler->progs.getCount() == 1; });
    EXPECT_EQ(int(l.sampler->curProg), 0);
    EXPECT_EQ(sounding(*l.sampler), 0);
}

/// A parameter moves sounds that need not agree; its undo brings each back to where it was.
TEST(CSampler, ParametersAreUndoneSoundBySound) {
    Linked l;
    auto* other = new COSCSound(l.prog->layer, l.host.host);
    l.prog->layer->addSound(other);
    other->ccMap[74] = targetPan;
    l.sound->ccMap[74] = targetCutoff;
    l.sound->setCutoff(0.8f);
    other->setPan(0.3f);
    const auto moved = [&](float cutoff, float pan) {
        l.host.host->settle();
        return l.sound->cutoff == cutoff && other->pan == pan;
    };
    l.host.host->tasks->audioStopped();
    l.host.host->values->setParam(l.sampler, 74, 0.25f);
    EXPECT_TRUE(moved(0.25f, -0.5f));
    EXPECT_STREQ(l.host.host->undoText().asChar(), "Pan, Cutoff");
    l.host.host->undoClicked();
    EXPECT_TRUE(moved(0.8f, 0.3f)) << l.sound->cutoff << ", " << other->pan;
    l.host.host->redoClicked();
    EXPECT_TRUE(moved(0.25f, -0.5f));
    l.sound->setCutoff(1.0f);
    other->setPan(1.0f);
    l.host.host->values->setParam(l.sampler, 74, 1.0f);
    EXPECT_EQ(l.host.host->undoIndex, 0) << "where it had them go they stand already";
}

/// Blocks full of notes of both kinds, effects and all, allocate nothing and lock nothing.
TEST(CSampler, AudioThreadAllocatesNothing) {
    TestHost host(512);
    auto* sampler = host.add(new CSampler(host.host));
    host.connect(sampler);
    rtReset();
    for (int p = 0; p < 32; p++) {
        sampler->curProg = p;
        for (int k = 0; k < 4; k++) sampler->guiQueue.push(asData(on, 48 + 5 * k, 90));
        host.run(3);
        for (int k = 0; k < 4; k++) sampler->guiQueue.push(asData(on, 48 + 5 * k, 0));
        host.run(2);
    }
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_GT(rms(host.left, 0, host.left.size()), 0.01);
}
