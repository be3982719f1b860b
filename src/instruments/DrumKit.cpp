#include "instruments/DrumKit.h"

#include "audiofiles/AudioImport.h"
#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CREX2.h"
#include "instruments/CSampleClip.h"
#include "instruments/DrumSynthesis.h"
#include "instruments/SamplerFiles.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>

namespace {

constexpr int resourceRate = 44100;
constexpr int hatGroup = 1;
constexpr int clipChannels = 2; ///< that a sound can play

struct Resource {
    const char* name;
    std::vector<float> (*synthesize)();
};

const Resource resources[] = {
    {"kick.wav", synthesizeKick},           {"snare.wav", synthesizeSnare},
    {"clap.wav", synthesizeClap},           {"hat-open.wav", synthesizeHatOpen},
    {"hat-close.wav", synthesizeHatClosed},
};

/// A new item enters a list, at once or by the step.
template <class Enter>
void enter(CObject* object, CList& to, CUndo* undo, Enter&& atOnce) {
    if (undo)
        undo->asAdd(object, &to);
    else
        atOnce();
}

std::vector<short> inShorts(const std::vector<float>& values) {
    std::vector<short> content;
    content.reserve(values.size());
    for (const float v : values)
        content.push_back(short(std::lround(fLimit(v, -1.0f, 1.0f) * 32767.0f)));
    return content;
}

/// Worked out once, and then kept: 0.6 MB in all.
const std::vector<short>& contentOf(int resource) {
    static std::mutex guard;
    static std::vector<short> made[std::size(resources)];
    const std::scoped_lock lock(guard);
    std::vector<short>& content = made[resource];
    if (content.empty()) content = inShorts(resources[resource].synthesize());
    return content;
}

void takeContent(CSample* sample, const CStr& name, const std::vector<short>& content) {
    const size_t bytes = content.size() * sizeof(short);
    auto* data = static_cast<unsigned char*>(std::malloc(bytes));
    if (!data) return;
    std::memcpy(data, content.data(), bytes);
    sample->filename = name;
    sample->setFormat(resourceRate, 16, 1);
    sample->takeData(data, int(content.size()));
}

/// Of a format that is no sample's own, by way of a file that goes again.
bool openConverted(CSampleClip* clip, const CStr& path) {
    std::error_code error;
    std::string folder = (getTempFolder() + "/sondrava-clip-XXXXXX").asChar();
    if (!mkdtemp(folder.data())) return false;
    ImportProgress progress;
    std::vector<CStr> made;
    const ImportWish wish{.path = path, .folder = folder.c_str()};
    const bool read = importAudio(wish, made, progress) == ImportResult::good && !made.empty() &&
                      clip->open(made.front());
    clip->filename = path;
    std::filesystem::remove_all(folder, error);
    return read;
}

} // namespace

void takeValues(CSample* sample, const CStr& name, const std::vector<float>& values) {
    takeContent(sample, name, inShorts(values));
}

void loadResource(CSample* sample, int resource) {
    if (resource < 0 || resource >= int(std::size(resources))) return;
    takeContent(sample, resources[resource].name, contentOf(resource));
}

void getKick(CSample* sample) {
    loadResource(sample, drumKick);
}
void getSnare(CSample* sample) {
    loadResource(sample, drumSnare);
}
void getClap(CSample* sample) {
    loadResource(sample, drumClap);
}
void getHatOpen(CSample* sample) {
    loadResource(sample, drumHatOpen);
}
void getHatClosed(CSample* sample) {
    loadResource(sample, drumHatClosed);
}

std::unique_ptr<CSampleClip> openClip(const CStr& path) {
    auto clip = std::make_unique<CSampleClip>();
    const bool plain = clip->open(path) && clip->chs <= clipChannels;
    if (!plain && !openConverted(clip.get(), path)) return nullptr;
    if (clip->frames < 1) return nullptr;
    return clip;
}

DrumKit::DrumKit(CQV* root, CLayer* target, CComp* strips)
    : SamplerContent(root, nullptr), layer(target), comp(strips) {
}

DrumKit::~DrumKit() {
    deleteAll<CDrumSound>(sounds);
}

CSound* DrumKit::addClip(CSampleClip* clip) {
    clip->playAll();
    clip->peakfile();
    clips.add(clip);
    auto* made = new CDrumSound(layer, host, comp);
    made->addSample(clip);
    sounds.add(made);
    return made;
}

void DrumKit::addStandard() {
    for (const int resource : {drumKick, drumSnare, drumClap, drumHatClosed, drumHatOpen}) {
        auto* clip = new CSampleClip;
        loadResource(clip, resource);
        CSound* made = addClip(clip);
        if (resource == drumHatClosed || resource == drumHatOpen) made->group = hatGroup;
    }
}

bool DrumKit::addFile(const CStr& path) {
    std::unique_ptr<CSampleClip> clip = openClip(path);
    if (!clip) return false;
    addClip(clip.release());
    return true;
}

void DrumKit::addSlices(CREX2& loop) {
    for (int i = 0; i < loop.getNumSlices(); i++) {
        CSampleClip* clip = loop.getSlice(i) ? loop.render(i) : nullptr;
        if (!clip) continue;
        clip->filename = CStr("slice ") + asStr(i);
        addClip(clip);
    }
}

void DrumKit::retarget(CLayer* target, CComp* strips) {
    layer = target;
    comp = strips;
    for (CDrumSound* s : sounds) {
        s->layer = layer;
        s->output->comp = comp;
    }
}

int DrumKit::height() const {
    int pixels = 0;
    for (const CDrumSound* s : sounds) pixels += s->getHeight();
    return pixels;
}

void DrumKit::take(CList& drumClips, CUndo* undo) {
    while (auto* clip = clips.getFirst()) {
        clips.del(0);
        enter(clip, drumClips, undo, [&] { drumClips.add(clip); });
    }
    while (auto* drum = static_cast<CDrumSound*>(sounds.getFirst())) {
        sounds.del(0);
        enter(drum, layer->sounds, undo, [&] { layer->addSound(drum); });
    }
}

bool DrumKit::readBlock(const CStr& block, CStream& body) {
    if (block == "filetype") ended = true;
    if (block == "progid") name = body.readStr();
    const bool wanted = block == "smp" || block == "sound" || block == "soundmod";
    return !wanted || SamplerContent::readBlock(block, body);
}

std::unique_ptr<CSound> DrumKit::newSound(int kind) {
    if (kind != typeWavSound) return nullptr;
    return std::make_unique<CDrumSound>(layer, host, comp);
}

void DrumKit::keepSound(CSound* made) {
    made->reserved = 1;
    sounds.add(static_cast<CDrumSound*>(made)); // of `newSound`
}

void writeDrumKit(CStream* stream, const CStr& name, const CLayer& layer) {
    ListOf<CSampleClip> used;
    for (const CDrumSound* s : drumSounds(layer))
        if (s->clipCount > 0) used.addUnique(s->clips[0]);
    for (auto* clip : used) writeClip(stream, clip);
    stream->writeId("prog", 0);
    stream->writeId("progid", name.length() + int(sizeof(int)));
    stream->writeStr(name);
    stream->writeId("layer", 0);
    for (const CSound* s : layer.sounds) writeDrum(stream, *s, used);
}
