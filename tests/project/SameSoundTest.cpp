// A song sounds the same in blocks of every size, in an export as on a device: twelve small songs
// that use what the program has to make sound.

#include "sequencer/SongFixture.h"

#include "audiofiles/CElastiqueRender.h"
#include "base/TempFolder.h"
#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CPhaser.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CGroupCh.h"
#include "engine/plan/GraphPlan.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "project/CompTable.h"
#include "project/SongSounds.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/render/CRender.h"

#include <numbers>

namespace {

constexpr int songTicks = 2400;

struct Types {
    Types() { enterCompTypes(); }
};

struct SmallSong : Types, SongFixture {
    CPart* part(CSongTrack* t, CPart* made) {
        made->length = songTicks;
        return t->addPart(made, nullptr);
    }
    /// Notes at odd places, some of them together.
    CPart* melody(CSongTrack* t, int step = 190, int base = 48) {
        CPart* made = part(t, new CMIDIPart);
        for (int i = 0; i * step < songTicks; i++) {
            CMIDIEvent* e = note(base + i * 7 % 24, step * (1 + i % 3));
            e->data = asData(midiNoteOn, asByte1(e->data), 50 + i * 29 % 77);
            made->addEvent(i * step + i % 2 * 7, e);
        }
        return made;
    }
    CSongTrack* synth(int program, int step = 190, int base = 48) {
        CSongTrack* t = track(trackMIDI);
        instrument = addSynthesizer(seq, t->track, program);
        setStrip(instrument, 0.4f, 0.0f);
        melody(t, step, base);
        return t;
    }
    CSubTrack* lane(CSongTrack* t, CObject* object, int param, int phase = 0) {
        auto* made = new CSubTrack("Lane", laneAutomation);
        made->object = object;
        made->param = param;
        t->track->addLane(made, nullptr);
        for (int i = 0; i < 5; i++) {
            CEnvEvent* e = createEnvEvent(nullptr, float((i + phase) % 3) * 0.4f + 0.1f);
            e->curve = 0.3f * float(i % 2);
            t->parts.getFirst()->addEventParam(100 + i * 433, e, made->slot);
        }
        return made;
    }
    CSampleClip* clip(int frames, double hz, int rate = 44100) {
        auto* made = new CSampleClip;
        made->setFormat(rate, 16, 1);
        auto* values = static_cast<short*>(std::calloc(size_t(frames), sizeof(short)));
        for (int i = 0; i < frames; i++)
            values[i] = short(3000 * std::sin(2 * std::numbers::pi * hz * i / rate) *
                              (1.0 - double(i) / frames));
        made->takeData(reinterpret_cast<unsigned char*>(values), frames);
        made->playAll();
        return made;
    }
    CSampler* instrument = nullptr; ///< the latest

    std::vector<float> live(int block, int frames) {
        host.setFrames(block);
        while (host.makeStretcher()) {
        }
        device.run(3);
        host.start();
        device.forget();
        const int late = host.plans->latency(); // an export leaves it out
        while (int(device.left.size()) < late + frames) device.run();
        std::vector<float> sound(device.left.begin() + late, device.left.begin() + late + frames);
        sound.insert(sound.end(), device.right.begin() + late,
                     device.right.begin() + late + frames);
        return sound;
    }
    std::vector<float> exported(int frames) {
        TempFolder folder;
        CSample file;
        file.streamed = 1;
        file.setFormat(44100, 32, 2);
        file.create(folder.file("a.wav"));
        file.writeHeader();
        CRender render(&host, seq);
        ListOf<COutputChannel> outputs;
        outputs.add(device.out->output());
        render.setTarget(device.out->output(), &file);
        render.process(0.0, songTicks, &outputs, true, nullptr);
        CSample heard;
        EXPECT_TRUE(heard.open(folder.file("a.wav")));
        std::vector<float> pairs(size_t(frames) * 2), sound(pairs);
        heard.readFrames(0, frames, pairs.data());
        for (int i = 0; i < frames; i++) {
            sound[size_t(i)] = pairs[size_t(i) * 2];
            sound[size_t(frames + i)] = pairs[size_t(i) * 2 + 1];
        }
        return sound;
    }
};

void programs(SmallSong& s, int from, int to) {
    for (int i = from; i < to; i++) s.synth(i, 230 + i * 17);
}

void modulation(SmallSong& s) {
    for (int i = 0; i < 6; i++) {
        CSongTrack* t = s.synth(i, 310);
        s.instrument->getProg()->eachSound([i](CSound* sound) {
            sound->mode = static_cast<unsigned char>(i % 2);
            sound->glide = 120 * (i % 2);
            for (int k = 0; k < lfoCount; k++) {
                sound->lfo[k]->wave = (i + k) % 5;
                sound->lfo[k]->restart = (i + k) % 3;
                sound->lfo[k]->sync = k % 2;
                sound->lfo[k]->delay = 37 * k;
                sound->lfo[k]->rate = 3.7f + float(i);
                sound->lfo[k]->setSlot(0, targetPitch + k, 0.4f);
            }
            sound->pitchInitialChanged(7);
            sound->pitchAttackChanged(20);
        });
        s.lane(t, s.instrument, 74, i);
        CSubTrack* bend = s.lane(t, nullptr, 0, i);
        bend->target = targetPitchBend;
    }
}

void samples(SmallSong& s) {
    for (const bool loops : {false, true}) {
        CSongTrack* t = s.synth(0, 170, 55);
        CSampleClip* clip = s.clip(30000, 311.0, 48000);
        if (loops) clip->loop = loopForward, clip->loopStart = 777;
        CLayer* layer = s.instrument->getLayer();
        auto* sound = new CWavSound(layer, &s.host);
        sound->addSample(clip);
        const GraphHold hold(&s.host);
        s.instrument->clips.add(clip);
        layer->addSound(sound);
        s.lane(t, s.instrument->output(), 1);
    }
}

void drums(SmallSong& s) {
    CSongTrack* t = s.track(trackDrum);
    for (int i = 0; i < 3; i++) {
        auto* sound = new CDrumSound(t->track->drumLayer(), &s.host, s.seq);
        CSampleClip* clip = s.clip(3000 + i * 9000, 90.0 * (i + 1));
        sound->addSample(clip);
        const GraphHold hold(&s.host);
        s.seq->drumClips.add(clip);
        t->track->drumLayer()->addSound(sound);
        addInsert(sound->output.get(), fxDelay + i, -1);
    }
    auto* part = s.part(t, new CDrumPart);
    for (int i = 0; i < 40; i++) {
        CDrumEvent* e = createDrumEvent();
        e->sound = i % 3;
        e->length = 55;
        e->tune = 1.0f + float(i % 4) * 0.1f;
        e->style.chance = static_cast<unsigned char>(40 + i);
        e->style.repeats = static_cast<unsigned char>(1 + i % 4);
        e->style.flamMs = static_cast<unsigned char>(i % 3 * 11);
        part->addEvent(i * 61, e);
    }
    t->track->groove.amount = 0.7f;
}

void arpeggios(SmallSong& s) {
    for (int mode = 0; mode < arpModes; mode++) {
        CSongTrack* t = s.synth(6, 400 + mode * 30);
        CArp* arp = t->track->arp.get();
        arp->enable(1);
        arp->setMode(mode);
        arp->setOctaveRng(1 + mode % 3);
        arp->setGate(0.4f + 0.1f * float(mode % 4));
        arp->setProb(0.8f);
        arp->getProg()->setSwing(0.5f);
        arp->getProg()->setStepTicks(77.7f);
    }
    auto* alone = s.device.add(new CArp(&s.host));
    alone->enable(1);
    CSongTrack* t = s.track(trackMIDI);
    s.melody(t, 300);
    CSampler* synth = addSynthesizer(s.seq, t->track, 3);
    const GraphHold hold(&s.host);
    deleteAll(synth->midiCables);
    alone->addMIDICable(t->track->outPort(), nullptr);
    synth->addMIDICable(alone->outPort(), nullptr);
}

void grooves(SmallSong& s) {
    for (int i = 0; i < 4; i++) {
        CSongTrack* t = s.synth(1 + i, 97 + i * 40);
        t->track->groove.amount = 0.3f * float(i);
        for (CBaseEvent* e = t->parts.getFirst()->getEvents(); e; e = e->next) {
            e->style.repeats = static_cast<unsigned char>(1 + i);
            e->style.flamMs = static_cast<unsigned char>(9 * i);
            e->style.chance = static_cast<unsigned char>(100 - 10 * i);
        }
    }
}

void clips(SmallSong& s) {
    int i = 0;
    for (const int mode : {playRepitch, playResample, playStretch, playRepitch})
        for (const int rate : {44100, 48000}) {
            CSongTrack* t = s.track(trackAudio);
            auto* part = new CAudioPart;
            part->multiclip = 1;
            CAudioEvent* e = createAudioEvent();
            e->sample = s.addSample(
                40000, [=](int n) { return 0.2 * std::sin(n * 0.031) * std::cos(n * 0.0007); },
                rate);
            e->end = 39000;
            e->mode = static_cast<unsigned char>(mode);
            e->ticks = 1900;
            e->semitones = i % 3;
            e->reverse = i % 2;
            e->fadeInMs = float(40 * i);
            e->fadeOutMs = 300.0f;
            part->addEvent(31 * i++, e);
            s.part(t, part);
        }
}

void racks(SmallSong& s) {
    for (int kind = 0; kind < effectKindCount; kind++) {
        s.synth(kind % 4, 260 + kind * 31);
        COutputChannel* ch = s.instrument->output();
        addInsert(ch, kind, -1);
        addInsert(ch, (kind + 3) % effectKindCount, -1)->wet = 0.6f;
    }
    s.device.run(2);
}

void tempos(SmallSong& s) {
    programs(s, 0, 3);
    clips(s);
    for (CSongTrack* t : s.prog()->tracks) {
        if (t->track->kind != trackMIDI) continue;
        t->track->arp->enable(1);
        addInsert(s.instrument->output(), fxDelay, -1);
    }
    for (const auto& [tick, bpm] :
         {std::pair{0, 97.3f}, {333, 180.0f}, {1000, 61.0f}, {1701, 240.0f}})
        s.tempoAt(tick, bpm);
    s.prog()->tempos.items(1)->ramp = 1;
    s.seq->tempo.changed();
}

void automation(SmallSong& s) {
    s.host.addSendClicked();
    CSongTrack* t = s.synth(9);
    COutputChannel* ch = s.instrument->output();
    CComp* rack = addInsert(ch, fxChorus, -1);
    for (int k = 0; k < eqBandCount; k++) ch->setEqPower(k, true);
    for (const int param : {0, 1, 2, 4, 5, 10}) s.lane(t, ch, param, param);
    s.lane(t, ch->sendLevels[0], 0);
    s.lane(t, rack, paramWet, 1);
    s.lane(t, s.instrument, 74, 2);
}

void buses(SmallSong& s) {
    for (const int kind : {fxReverb, fxPhaser}) {
        s.host.addSendClicked();
        auto* bus = static_cast<CComp*>(s.host.sends.items(s.host.sends.getCount() - 1));
        addInsert(bus->output(), kind, -1);
    }
    s.host.addGroupClicked();
    CComp* group = s.host.firstOfType(compGroupCh);
    for (int i = 0; i < 5; i++) {
        s.synth(4 + i, 211 + i * 60);
        for (int k : {0, 1})
            s.instrument->output()->sendLevels[k]->level = 0.3f + 0.1f * float(i + k);
        const GraphHold hold(&s.host);
        if (i % 2) group->addAudioCable(s.instrument->output(), nullptr);
    }
    auto* rack = s.device.add(new CEffect(&s.host));
    s.device.connect(s.instrument, rack);
    s.device.connect(rack);
}

} // namespace

/// The same bits at each size of block, odd ones too, behind blocks of silence as in a project that
/// is open, and in the export.
TEST(SameSound, InBlocksOfEverySizeAndExported) {
    const std::pair<const char*, void (*)(SmallSong&)> songs[] = {
        {"programs", [](SmallSong& s) { programs(s, 0, 16); }},
        {"more programs", [](SmallSong& s) { programs(s, 16, 32); }},
        {"modulation", modulation},
        {"samples", samples},
        {"drums", drums},
        {"arpeggios", arpeggios},
        {"grooves", grooves},
        {"clips", clips},
        {"racks", racks},
        {"tempos", tempos},
        {"automation", automation},
        {"buses", buses},
    };
    constexpr int frames = 50000;
    for (const auto& [name, build] : songs) {
        std::vector<float> expected;
        for (const int block : {1024, 0, 32, 128, 480, 4096, 77}) {
            SmallSong song;
            song.readsDisk = block == 0;
            build(song);
            const std::vector<float> sound =
                block ? song.live(block, frames) : song.exported(frames);
            if (block == 1024) {
                expected = sound;
                EXPECT_GT(*std::ranges::max_element(sound), 0.01f) << name << " is silent";
                EXPECT_LT(*std::ranges::max_element(sound), 1.0f) << name << " is cut off";
            }
            const auto first = std::ranges::mismatch(sound, expected).in1 - sound.begin();
            EXPECT_EQ(first, frames * 2) << name << ", blocks of " << block;
        }
    }
}
