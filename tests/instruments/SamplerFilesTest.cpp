#include "SoundFixture.h"

#include "base/CStream.h"

#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "support/Told.h"

#include <random>

namespace {

std::vector<unsigned char> bytesOf(CMemoryStream& s) {
    return {s.data, s.data + s.getPos()};
}

std::vector<unsigned char> written(CSampler& s) {
    CMemoryStream stream;
    s.write(&stream);
    return bytesOf(stream);
}

void readBytes(CSampler& s, const std::vector<unsigned char>& bytes) {
    CMemoryStream stream;
    stream.write(bytes.data(), int(bytes.size()));
    stream.seek(0, seekStart);
    s.read(&stream, int(bytes.size()));
}

/// Fills every stored field of a bench with something that is not its default.
void fill(SoundBench& b) {
    std::mt19937 gen(1);
    const auto any = [&](std::initializer_list<Stored<float>*> fields) {
        for (Stored<float>* f : fields) *f = float(gen() % 1000 + 1) / 1001.0f;
    };
    const auto anyFrom2To5 = [&](std::initializer_list<Stored<int>*> fields) {
        for (Stored<int>* f : fields) *f = int(gen() % 4 + 2);
    };
    COSCSound* o = b.addOsc();
    CWavSound* w = b.addWav({0.5f, -0.5f, 0.25f, 0.125f}, {0.1f, 0.2f, 0.3f, 0.4f}, 22050);
    w->clips[0]->filename = "kick.wav";
    w->clips[0]->setOrgKey(48);
    w->clips[0]->setRange(1, 2);
    w->clips[0]->setLoop(loopForward);
    w->clips[0]->setLoopStart(1);
    any({&o->feed1, &o->detune, &o->phase, &o->width, &o->feed2, &o->phaseMod, &o->phase2,
         &o->oscRing, &o->modRing, &o->coarse2});
    anyFrom2To5({&o->pmMul});
    o->oscInv = -1.0f;
    for (CSound* s : {static_cast<CSound*>(o), static_cast<CSound*>(w)}) {
        any({&s->volume, &s->pan, &s->cutoff, &s->q, &s->coarse, &s->fine, &s->sends[0],
             &s->sends[1]});
        anyFrom2To5({&s->glide, &s->bendRange, &s->lowKey, &s->hiKey, &s->lowVel, &s->hiVel});
        s->mode = soundMono;
        s->group = 3;
        s->filter = filterBand;
        s->dist = s->mute = s->solo = 1;
        s->reserved = 77;
        for (int i = 0; i < 128; i++) s->ccMap[i] = i % 10;
        for (auto& e : s->envelope) {
            anyFrom2To5({&e->maxTime});
            any({&e->initial, &e->attack, &e->decay, &e->sustain, &e->release, &e->ac, &e->dc,
                 &e->rc});
            if (e->index >= 2) e->setSlot(1, targetPan, 0.625f);
        }
        for (auto& l : s->lfo) {
            anyFrom2To5({&l->mul, &l->div, &l->delay});
            any({&l->rate});
            l->wave = lfoSaw;
            l->sync = 1;
            l->inv = 0;
            l->restart = restartMono;
            l->setSlot(2, targetPitch, 12.5f);
            l->params[3].enabled = 0;
        }
        s->vel->setSlot(3, targetQ, 0.375f);
        s->cp->setSlot(0, targetCutoff, 0.75f);
        s->phaser()->setEnabled(1);
        s->phaser()->setRangeMin(111.0f);
        s->chorus()->setEnabled(1);
        s->chorus()->setDelay(7.0f);
    }
    b.prog->id = "My program";
    b.prog->family = "Bass";
    b.prog->words = "deep round";
    b.prog->macros[7] = {"Growl", 127, 0.25f, 0.75f};
    b.layer->editAll = 1;
    b.prog->addLayer()->addSound(new COSCSound(b.prog->layer, b.host.host));
    b.prog->layer = b.layer;
    b.prog->reverb()->setEnabled(0);
    b.prog->reverb()->setSize(4321);
    b.prog->reverb()->setPreDelay(55);
    b.prog->delay()->setEnabled(1);
    b.prog->delay()->setTicksLeft(3, 8);
    b.prog->delay()->setTimeRight(123.0f);
    b.prog->delay()->setSync(0);
    b.sampler.progs.add(b.sampler.createProg());
    b.sampler.curProg = 1;
    b.sampler.mch = 9;
    for (int i = 0; i < 32; i++) b.sampler.options[i] = (unsigned char)(i * 3);
}

} // namespace

/// Writing, reading and writing again gives the same bytes, from settings that are no defaults; so
/// does a duplicate. The first blocks are laid out as others expect them.
TEST(SamplerFiles, RoundTrip) {
    SoundBench b;
    fill(b);
    const auto first = written(b.sampler);
    CSampler other(b.host.host);
    readBytes(other, first);
    EXPECT_EQ(written(other), first);
    ASSERT_EQ(other.clips.getCount(), 1);
    auto* clip = other.clips.items(0);
    EXPECT_TRUE(clip->valid);
    EXPECT_FLOAT_EQ(clip->floatData(1)[2], 0.3f);
    EXPECT_EQ(int(clip->start), 1);
    EXPECT_EQ(int(other.curProg), 1);
    auto* prog = static_cast<CSynthProg*>(other.progs.items(0));
    EXPECT_EQ(prog->id, "My program");
    EXPECT_EQ(prog->family + "," + prog->words, "Bass,deep round");
    EXPECT_EQ(prog->macros[7].name, "Growl");
    EXPECT_EQ(prog->macros[7].controller, 127);
    EXPECT_TRUE(prog->macros[7].low == 0.25f && prog->macros[7].high == 0.75f);
    EXPECT_TRUE(prog->macros[6].low == 0.0f && prog->macros[6].high == 1.0f);
    EXPECT_EQ(prog->macros[0].controller, -1);
    // A program without such things keeps the bytes that it had before there were any.
    for (const char* block : {"progwords", "progmacros"}) {
        const std::string told = block;
        const auto found = std::search(first.begin(), first.end(), told.begin(), told.end());
        ASSERT_NE(found, first.end());
        EXPECT_EQ(std::search(found + 1, first.end(), told.begin(), told.end()), first.end());
    }
    EXPECT_EQ(prog->layers.indexed(prog->layer.load()), 0);
    EXPECT_EQ(prog->reverb()->getRevTime(), 4321);
    const std::unique_ptr<CSampler> twin(static_cast<CSampler*>(b.sampler.copy()));
    EXPECT_EQ(written(*twin), first);

    constexpr unsigned char head[] = "\10\0\0\0filetype\4\0\0\0\3\0\0\0\3\0\0\0smp";
    EXPECT_TRUE(std::equal(head, std::end(head) - 1, first.begin()));
}

/// A file cut anywhere, or with bytes changed at random, must neither crash nor hang, and what
/// comes out can be played and written.
TEST(SamplerFiles, DamagedFilesDoNoHarm) {
    SoundBench b;
    fill(b);
    const auto good = written(b.sampler);
    const Told told;
    std::mt19937 gen(7);
    for (size_t round = 0; round < 1200; round++) {
        auto bytes = good;
        if (round < 400)
            bytes.resize(good.size() * round / 400);
        else
            for (int k = 0; k < 1 + int(round % 40); k++)
                bytes[gen() % bytes.size()] = round % 2 ? 255 : (unsigned char)gen();
        CSampler other(b.host.host);
        readBytes(other, bytes);
        written(other);
        other.createChannels();
        other.createBuffers(b.host.host->frames);
        CMIDIBytes e;
        for (int key : {40, 60}) {
            e.data = asData(midiNoteOn, key, 60);
            other.doMapping(&e);
        }
        other.render(1024, 0);
        const float* out = other.output()->bufL;
        for (int i = 0; i < 1024; i++) ASSERT_TRUE(std::isfinite(out[i])) << "round " << round;
    }
}
