#include "tools/plugins/PluginBench.h"

#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "plugins/CVST.h"

namespace {

/// Of a length that all formats know what to do with: some begin with it, whatever they are told.
constexpr int blockFrames = 1024;
constexpr int blocks = 200, chordBlock = 2, noiseBlock = 100;

/// Some plug-ins draw random numbers; the signal that goes in is always the same.
float noise(unsigned at) {
    return float(at * 2654435761u >> 8) / float(1 << 24) - 0.5f;
}

} // namespace

std::unique_ptr<CQV> PluginBench::newHost() {
    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(blockFrames);
    return host;
}

std::vector<float> PluginBench::play(CVST& plugin) {
    std::vector<float> heard;
    plugin.resetSound();
    for (int block = 0; block < blocks; block++) {
        const GraphHold hold(host);
        plugin.prepare(blockFrames);
        feed(plugin, block);
        plugin.process(blockFrames);
        for (const auto* out : plugin.outputs)
            for (const float* side : {out->bufL, out->bufR})
                heard.insert(heard.end(), side, side + blockFrames);
        const CMIDIQ* notes = plugin.outPort();
        for (int i = 0; notes && i < notes->count; i++)
            heard.push_back(float(notes->events[i].data));
    }
    return heard;
}

void PluginBench::feed(CVST& plugin, int block) {
    if (CMIDIQ* port = plugin.inPort(); port && block == chordBlock)
        for (const int key : {48, 55, 60, 64})
            port->addMidiEvent(10.0, asData(midiNoteOn, key, 100));
    for (auto* in : plugin.inputs)
        for (int i = 0; i < blockFrames; i++)
            in->bufL[i] = in->bufR[i] = block == 0 && i == 0 ? 0.9f
                                        : block >= noiseBlock
                                            ? noise(unsigned(block * blockFrames + i))
                                            : 0.0f;
}
