#include "project/ClipContent.h"

#include "audiofiles/CSample.h"
#include "base/BlockView.h"
#include "instruments/CDrumSound.h"
#include "instruments/DrumKit.h"
#include "project/ItemView.h"
#include "project/SampleBlocks.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/songfile/SongReading.h"

#include <algorithm>

/// A kit whose blocks are told one by one.
class ClipKit : public DrumKit {
public:
    explicit ClipKit(CSeq* seq) : DrumKit(seq->host, nullptr, seq) {}
    bool read(const CStr& block, CStream& body) { return readBlock(block, body); }
};

ClipContent::ClipContent(CSeq* song) : seq(song), kit(std::make_unique<ClipKit>(song)) {
}

ClipContent::~ClipContent() {
    deleteAll(samples);
}

DrumKit& ClipContent::drums() {
    return *kit;
}

bool ClipContent::read(CStream* stream) {
    if (readAll(stream)) return true;
    part.reset();
    deleteAll(samples);
    devices.clear();
    kit = std::make_unique<ClipKit>(seq);
    return false;
}

/// What is named by its place in the file first, then what names it.
bool ClipContent::readAll(CStream* stream) {
    const int64_t begin = stream->getPos();
    if (!eachBlock(stream, &ClipContent::readContent)) return false;
    stream->setPos(begin);
    if (!eachBlock(stream, &ClipContent::readDrums)) return false;
    stream->setPos(begin);
    return readPart(stream) && samplersWhole();
}

bool ClipContent::eachBlock(CStream* stream, Reader reader) {
    BlockView view(stream, stream->getSize());
    CStr name;
    int size = 0;
    while (view.left() > 0) {
        if (!readBlockHead(view, name, size)) return false;
        ItemView item(stream, size);
        if (!(this->*reader)(name, item) || item.tooShort) return false;
        item.skipRest();
    }
    return true;
}

bool ClipContent::readContent(const CStr& block, ItemView& item) {
    if (block == "samples") return readSamples(item);
    if (block == "smp") return kit->read(block, item);
    if (block == "device") return readDevice(item);
    if (block == "data") return readData(item);
    return true;
}

bool ClipContent::readDrums(const CStr& block, ItemView& item) {
    if (block != "sound" && block != "soundmod") return true;
    return kit->read(block, item) && kit->sounds.getCount() <= mostDrums;
}

bool ClipContent::readPart(CStream* stream) {
    part = SongReading(seq, stream, stream->getSize(), samples).readPart();
    if (!part || part->type < partMIDI || part->type > partDrum) return false;
    part->flags = 0u;
    return true;
}

bool ClipContent::readSamples(ItemView& item) {
    const int count = item.readInt();
    if (count < 0 || count > mostSamples - samples.getCount()) return false;
    for (int i = 0; i < count; ++i) {
        std::unique_ptr<CSample> sample = readWithFrames(item);
        if (!sample || item.tooShort) return false;
        samples.add(sample.release());
    }
    return true;
}

bool ClipContent::readDevice(ItemView& item) {
    if (devices.size() == mostDevices) return false;
    ClipDevice device;
    device.kind = item.readByte();
    if (device.kind == devicePlugin) device.path = item.readStr();
    devices.push_back(std::move(device));
    return true;
}

/// Belongs to the device in front of it.
bool ClipContent::readData(ItemView& item) {
    if (devices.empty()) return true;
    std::vector<unsigned char>& data = devices.back().data;
    data.resize(size_t(item.left()));
    item.read(data.data(), int(data.size()));
    return true;
}

/// Whether all synthesizers can be made of their programs.
bool ClipContent::samplersWhole() {
    return std::all_of(devices.begin(), devices.end(), [this](const ClipDevice& device) {
        if (device.kind != deviceSampler) return true;
        CMemoryStream stream;
        stream.write(device.data.data(), int(device.data.size()));
        stream.setPos(0);
        SamplerContent content(seq->host, nullptr);
        content.read(&stream, stream.getSize());
        return content.badBlock.empty() && !content.cutOff && !content.progs.empty();
    });
}
