#pragma once

#include "engine/MidiBytes.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "support/TestHost.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>

/// A program with one layer in a sampler that hangs nowhere, on a host without devices, so that
/// sounds and voices can be rendered by hand.
struct SoundBench {
    explicit SoundBench(double rate = 44100.0, int frames = 1024) : host(frames, rate) {
        sampler.progs.add(prog = new CSynthProg(host.host, &sampler));
        layer = prog->addLayer();
    }

    TestHost host;
    CSampler sampler{host.host};
    CSynthProg* prog;
    CLayer* layer;

    COSCSound* addOsc() {
        auto* s = new COSCSound(layer, host.host);
        layer->addSound(s);
        return s;
    }
    /// A sample sound of a clip made from values of -1 to 1, all channels one after the other.
    CWavSound* addWav(const std::vector<float>& left, const std::vector<float>& right = {},
                      int rate = 44100) {
        auto* clip = new CSampleClip;
        const int chs = right.empty() ? 1 : 2;
        clip->setFormat(rate, 32, chs);
        auto* data = static_cast<float*>(std::malloc(left.size() * size_t(chs) * sizeof(float)));
        for (size_t i = 0; i < left.size(); i++) {
            data[i * size_t(chs)] = left[i];
            if (chs == 2) data[i * 2 + 1] = right[i];
        }
        clip->takeData(reinterpret_cast<unsigned char*>(data), int(left.size()));
        clip->playAll();
        sampler.clips.add(clip);
        auto* s = new CWavSound(layer, host.host);
        s->addSample(clip);
        layer->addSound(s);
        return s;
    }
    CVoice* play(CSound* s, int note, int velocity = 100) {
        CVoice* v = sampler.addVoice(s, asData(midiNoteOn, note, velocity), 0);
        v->host = host.host;
        s->initVoice(v);
        return v;
    }
    /// Renders voice `v` alone from here on.
    std::vector<float> render(CVoice* v, int frames, std::vector<float>* right = nullptr) {
        std::vector<float> l(static_cast<size_t>(frames)), r = l;
        for (int at = 0; at < frames; at += host.host->frames)
            v->sound->process(&l[size_t(at)], &r[size_t(at)], v,
                              std::min(host.host->frames, frames - at));
        if (right) *right = r;
        return l;
    }
    void event(int data) {
        CMIDIBytes e;
        e.data = data;
        sampler.doMapping(&e);
    }
};

inline double rms(const std::vector<float>& v, size_t from, size_t to) {
    double sum = 0;
    for (size_t i = from; i < to; i++) sum += double(v[i]) * double(v[i]);
    return std::sqrt(sum / double(to - from));
}
