#include "SoundFixture.h"

#include "base/CStream.h"
#include "base/Messages.h"
#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

#include "instruments/PatchText.h"

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
    const auto unit = [&] { return float(gen() % 1000 + 1) / 1001.0f; };
    COSCSound* o = b.addOsc();
    CWavSound* w = b.addWav({0.5f, -0.5f, 0.25f, 0.125f}, {0.1f, 0.2f, 0.3f, 0.4f}, 22050);
    w->clips[0]->filename = "kick.wav";
    w->clips[0]->setOrgKey(48);
    w->clips[0]->setRange(1, 2);
    w->clips[0]->setLoop(loopForward);
    w->clips[0]->setLoopStart(1);
    for (Shared<float>* f : {&o->feed1, &o->detune, &o->phase, &o->width, &o->feed2, &o->phaseMod,
                             &o->phase2, &o->oscRing, &o->modRing})
        *f = unit();
    o->coarse2 = -7.5f;
    o->pmMul = 12;
    o->oscInv = -1.0f;
    for (CSound* s : {static_cast<CSound*>(o), static_cast<CSound*>(w)}) {
        s->mode = soundMono;
        s->group = 3;
        s->volume = unit();
        s->pan = -unit();
        s->filter = filterBand;
        s->cutoff = unit();
        s->q = unit();
        s->dist = 1;
        s->coarse = 11.0f;
        s->fine = -0.25f;
        s->glide = 120;
        s->bendRange = 2;
        s->sends[0] = unit();
        s->sends[1] = unit();
        s->mute = s->solo = 1;
        s->reserved = 77;
        s->lowKey = 10;
        s->hiKey = 100;
        s->lowVel = 5;
        s->hiVel = 99;
        for (int i = 0; i < 128; i++) s->ccMap[i] = i % 10;
        for (auto& e : s->envelope) {
            e->maxTime = 4000;
            for (Shared<float>* f : {&e->initial, &e->attack, &e->decay, &e->sustain, &e->release,
                                     &e->ac, &e->dc, &e->rc})
                *f = unit();
            if (e->index >= 2) e->setSlot(1, targetPan, unit());
        }
        for (auto& l : s->lfo) {
            l->wave = lfoSaw;
            l->rate = 3.5f;
            l->sync = 1;
            l->mul = 3;
            l->div = 5;
            l->delay = 333;
            l->inv = 0;
            l->restart = restartMono;
            l->setSlot(2, targetPitch, 12.5f);
            l->params[3].enabled = 0;
        }
        s->vel->setSlot(3, targetQ, unit());
        s->cp->setSlot(0, targetCutoff, unit());
        s->phaser()->setEnabled(1);
        s->phaser()->setRangeMin(111.0f);
        s->chorus()->setEnabled(1);
        s->chorus()->setDelay(7.0f);
    }
    b.prog->id = "My program";
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

int messages = 0;
CStr lastMessage;

struct CountMessages {
    CountMessages() {
        messages = 0;
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int) {
            messages++;
            lastMessage = title + "|" + text;
            return int(mbOk);
        };
    }
    ~CountMessages() { messageHooks().showMsg = nullptr; }
};

} // namespace

/// Writing, reading and writing again gives the same bytes, from settings that are no defaults.
TEST(SamplerFiles, RoundTrip) {
    SoundBench b;
    fill(b);
    const auto first = written(b.sampler);
    CSampler other(b.host.host);
    readBytes(other, first);
    EXPECT_EQ(written(other), first);
    ASSERT_EQ(other.clips.getCount(), 1);
    auto* clip = static_cast<CSampleClip*>(other.clips.items(0));
    EXPECT_TRUE(clip->valid);
    EXPECT_FLOAT_EQ(clip->floatData(1)[2], 0.3f);
    EXPECT_EQ(int(clip->start), 1);
    EXPECT_EQ(int(other.curProg), 1);
    auto* prog = static_cast<CSynthProg*>(other.progs.items(0));
    EXPECT_EQ(prog->id, "My program");
    EXPECT_EQ(prog->layers.indexed(prog->layer.load()), 0);
    EXPECT_EQ(prog->reverb()->getRevTime(), 4321);
}

/// A program of the first block, byte by byte.
TEST(SamplerFiles, HeadIsAsDocumented) {
    SoundBench b;
    const auto bytes = written(b.sampler);
    const unsigned char wanted[] = {8,   0,   0,   0,   'f', 'i', 'l', 'e', 't', 'y', 'p',
                                    'e', 4,   0,   0,   0,   3,   0,   0,   0,   3,   0,
                                    0,   0,   'm', 'c', 'h', 4,   0,   0,   0,   255, 255,
                                    255, 255, 5,   0,   0,   0,   'p', 'r', 'o', 'g', 'i'};
    ASSERT_GT(bytes.size(), sizeof wanted);
    EXPECT_TRUE(std::equal(std::begin(wanted), std::end(wanted), bytes.begin()));
}

TEST(SamplerFiles, DuplicatesAreEqual) {
    SoundBench b;
    fill(b);
    std::unique_ptr<CSampler> twin(static_cast<CSampler*>(b.sampler.copy()));
    EXPECT_EQ(written(*twin), written(b.sampler));
}

/// A file cut anywhere, or with bytes changed at random, must neither crash nor hang, and what
/// comes out can be played and written.
TEST(SamplerFiles, DamagedFilesDoNoHarm) {
    SoundBench b;
    fill(b);
    const auto good = written(b.sampler);
    CountMessages count;
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

/// A block that cannot be read is told once, by its name and size, and the rest is read.
TEST(SamplerFiles, RefusedBlockIsTold) {
    SoundBench b;
    b.addOsc();
    b.addOsc();
    auto bytes = written(b.sampler);
    const char tag[] = "sound";
    auto at = std::search(bytes.begin(), bytes.end(), tag, tag + 5);
    ASSERT_NE(at, bytes.end());
    *(at + 9) = 9; // the type of the first sound
    CSampler other(b.host.host);
    CountMessages count;
    readBytes(other, bytes);
    EXPECT_EQ(messages, 1);
    EXPECT_TRUE(lastMessage.pos("Error reading Synthesizer|Error reading block: sound (") == 0)
        << lastMessage.asChar();
    auto* prog = static_cast<CSynthProg*>(other.progs.items(0));
    EXPECT_EQ(static_cast<CLayer*>(prog->layers.items(0))->sounds.getCount(), 1);
}

/// Opening a bank adds its programs behind those there are, in one step that undo takes back.
TEST(SamplerFiles, OpenedBankIsOneStep) {
    SoundBench source;
    fill(source);
    CMemoryStream stream;
    source.sampler.writeToStream(&stream, source.prog);
    stream.seek(0, seekStart);

    TestHost host(256);
    auto* sampler = new CSampler(host.host);
    sampler->createChannels();
    sampler->createBuffers(256);
    sampler->progs.add(sampler->createProg());
    {
        const GraphHold hold(host.host);
        host.host->comps.add(sampler);
    }
    sampler->openFromStream(&stream);
    ASSERT_EQ(sampler->progs.getCount(), 2);
    EXPECT_EQ(int(sampler->curProg), 1);
    EXPECT_EQ(sampler->getProg()->id, "My program");
    EXPECT_EQ(sampler->clips.getCount(), 1);
    EXPECT_EQ(host.host->undoText(), "Open");
    host.host->undoClicked();
    host.host->settle();
    EXPECT_EQ(sampler->progs.getCount(), 1);
    EXPECT_EQ(sampler->clips.getCount(), 0);
    EXPECT_EQ(int(sampler->curProg), 0);
    host.host->redoClicked();
    host.host->settle();
    EXPECT_EQ(int(sampler->curProg), 1);
    EXPECT_EQ(sampler->getProg()->id, "My program");
}

/// The text names the fields as a program would set them, one a line.
TEST(PatchText, ListsTheFields) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->volume = 0.5f;
    s->pmMul = 3;
    s->vel->setSlot(2, targetCutoff, -0.25f);
    const CStr text = patchText(*s);
    for (const char* line :
         {"so->volume = 0.5f;\n", "so->pmMul = 3;\n", "so->lfo[0]->rate = 6f;\n",
          "so->envelope[1]->params[0].index = 4;\n", "so->vel->params[2].amount = -0.25f;\n"})
        EXPECT_GE(text.pos(line), 0) << line;
}
