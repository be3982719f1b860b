#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CUndo.h"
#include "instruments/CSF2.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "instruments/SamplerContent.h"

#include <algorithm>

// Presets of a SoundFont as programs of the sampler: each zone of an instrument becomes one sound.

namespace {

constexpr int clipRate = 44100; ///< for all samples, whatever their own

/// Turns one file into programs and clips; owns what was not taken.
class Import {
public:
    ListOf<CSynthProg> progs;
    ListOf<CSampleClip> clips;
    CSF2 font;

    explicit Import(CSampler* s) : sampler(s) {}
    ~Import() {
        deleteAll(progs);
        deleteAll(clips);
    }
    Import(const Import&) = delete;
    Import& operator=(const Import&) = delete;

    /// False when there is no room for the whole preset, which is then left out.
    bool addPreset(const CSF2Preset& preset) {
        for (const CSF2Instrument& instrument : preset.instruments)
            soundCount += int64_t(instrument.clips->size());
        if (soundCount > mostSounds || progs.getCount() >= mostProgs) return false;
        auto* prog = new CSynthProg(sampler->host, sampler);
        progs.add(prog);
        prog->id = preset.getId();
        CLayer* layer = prog->addLayer();
        for (const CSF2Instrument& instrument : preset.instruments)
            for (const CSF2SampleClip& zone : *instrument.clips)
                layer->addSound(makeSound(layer, instrument, zone));
        return true;
    }

private:
    CSampler* sampler;
    int64_t soundCount = 0;

    CWavSound* makeSound(CLayer* layer, const CSF2Instrument& use, const CSF2SampleClip& zone) {
        auto* sound = new CWavSound(layer, sampler->host);
        sound->addSample(clipOf(zone));
        sound->id = zone.sample->getId();
        sound->lowKey = std::max(use.lowKey, zone.lowKey);
        sound->hiKey = std::min(use.hiKey, zone.hiKey);
        sound->lowVel = std::max(use.lowVel, zone.lowVel);
        sound->hiVel = std::min(use.hiVel, zone.hiVel);
        sound->pan = zone.pan;
        sound->fine = std::clamp(zone.fine, -1.0f, 1.0f);
        return sound;
    }

    /// The clip of a sample is made for its first zone and serves all others.
    CSampleClip* clipOf(const CSF2SampleClip& zone) {
        CSF2Sample* sample = zone.sample;
        if (sample->clip) return sample->clip;
        auto* clip = sample->clip = new CSampleClip;
        clips.add(clip);
        clip->filename = sample->getId();
        clip->setFormat(clipRate, 16, 1);
        font.readData(sample);
        auto* bytes = reinterpret_cast<unsigned char*>(sample->data.release());
        clip->takeData(bytes, sample->getFrames());
        clip->setOrgKey(zone.key);
        clip->setRange(zone.start, zone.end);
        clip->setLoop(zone.loop);
        clip->setLoopStart(zone.loopStart);
        clip->peakfile();
        return clip;
    }
};

void moveAll(CList& from, CList& to, CUndo* undo) {
    while (auto* object = static_cast<CObject*>(from.getFirst())) {
        from.del(0);
        if (undo)
            undo->asAdd(object, &to);
        else
            to.add(object);
    }
}

} // namespace

bool CSampler::openSF2(const CStr& path, CUndo* undo) {
    const auto complain = [&](const char* what) {
        showMsg(nullptr, CStr("Error reading ") + id, CStr(what) + extractFileName(path));
        return false;
    };
    Import import(this);
    CSF2& font = import.font;
    if (!font.open(path)) return complain("Error reading file: ");
    bool whole = true;
    for (int i = 0; i < font.getPresetCount() && whole; i++)
        whole = import.addPreset(*font.getPreset(i));
    moveAll(import.clips, clips, undo);
    moveAll(import.progs, progs, undo);
    return whole || complain("Too many sounds in file: ");
}
