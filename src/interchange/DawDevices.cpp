#include "interchange/DawDevices.h"

#include "base/CStream.h"
#include "base/Paths.h"
#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "instruments/CSampler.h"
#include "interchange/DawParts.h"
#include "interchange/DawTables.h"
#include "interchange/DawUnits.h"
#include "interchange/DawXml.h"
#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"
#include "plugins/CVST.h"
#include "plugins/scan/PluginList.h"

namespace {

constexpr int64_t mostDeviceBytes = int64_t(256) << 20;

CStr text(const std::string& s) {
    return s.c_str();
}

/// Ids of VST 3 stand with and without dashes.
std::string plainId(const std::string& id) {
    std::string plain;
    for (const char c : id)
        if (c != '-') plain += char(std::tolower(static_cast<unsigned char>(c)));
    return plain;
}

} // namespace

DawDevices::DawDevices(CQV* root, const ZipReader& archive, const ScratchFolder& folder,
                       const PluginList* list, std::vector<CStr>& leftOut)
    : host(root), zip(archive), scratch(folder), known(list), lost(leftOut) {
}

std::string DawDevices::stateOf(const DawDevice& device) {
    if (device.state.empty() || !isPlainEntry(device.state)) return "";
    const std::string path = scratch.file("device" + std::to_string(states++) +
                                          extractFileExt(text(device.state)).asChar());
    if (zip.extract(device.state, mostDeviceBytes, path)) return path;
    addLine(lost, "What is set in " + text(device.name) + ": it is not in the file, or damaged");
    return "";
}

// Plug-ins.

/// Of those of that format the one with that id; VST 2 is known by its name alone.
CStr DawDevices::pathOf(const DawDevice& device) const {
    const auto format = pluginFormatOf(device.element);
    if (!known || !format) return "";
    for (const PluginList::Entry* entry : known->usable()) {
        if (entry->format() != *format) continue;
        const PluginFile file(entry->path);
        const bool same = *format == PluginFormat::vst2
                              ? sameText(entry->facts.name, text(device.name))
                              : plainId(file.inside.asChar()) == plainId(device.id);
        if (same) return entry->path;
    }
    return "";
}

std::unique_ptr<CVST> DawDevices::pluginOf(const DawDevice& device) {
    const CStr path = pathOf(device);
    auto plugin = path.empty() ? nullptr : newPlugin(host, path);
    if (!plugin) return nullptr;
    plugin->setRate(double(host->rate));
    const std::string state = stateOf(device);
    if (!state.empty() && !plugin->takeState(text(state)))
        addLine(lost, "What is set in " + text(device.name) + ": the plug-in does not take it");
    return plugin;
}

// Instruments.

std::unique_ptr<CComp> DawDevices::samplerOf(const DawDevice& device) {
    const std::string state = stateOf(device);
    if (state.empty()) return nullptr;
    auto sampler = std::make_unique<CSampler>(host);
    sampler->createChannels();
    sampler->createBuffers(host->frames);
    sampler->setRate(double(host->rate));
    sampler->setId(text(device.name));
    CFileStream stream(text(state), 0);
    sampler->read(&stream, int(stream.getSize()));
    if (!sampler->getProg()) return nullptr;
    return sampler;
}

std::unique_ptr<CComp> DawDevices::instrumentOf(const DawTrack& t) {
    const auto found = std::ranges::find(t.devices, "instrument", &DawDevice::role);
    if (found == t.devices.end()) return nullptr;
    std::unique_ptr<CComp> made = found->id == dawSampler ? samplerOf(*found) : pluginOf(*found);
    if (!made || !made->output()) {
        addLine(lost, "Instrument " + text(found->name) + " of " + text(t.name) +
                          ": a synthesizer plays in its place");
        return nullptr;
    }
    return made;
}

// Strips.

std::unique_ptr<CComp> DawDevices::rackOf(const DawDevice& device) {
    const std::string state = stateOf(device);
    if (state.empty()) return nullptr;
    auto rack = std::make_unique<CEffect>(host);
    rack->createIO();
    rack->createBuffers(host->frames);
    CFileStream stream(text(state), 0);
    rack->read(&stream, int(stream.getSize()));
    if (!rack->getProg()) return nullptr;
    rack->setRate(double(host->rate));
    rack->id = rack->getProg()->id;
    return rack;
}

/// Bands that are off give way to those that are on.
void DawDevices::setBands(const DawTrack& t, COutputChannel* strip) {
    std::vector<DawBand> bands = t.bands;
    if (bands.size() > eqBandCount) std::erase_if(bands, [](const DawBand& b) { return !b.on; });
    int place = 0;
    for (const DawBand& b : bands) {
        const int type = bandTypeOf(b.type);
        if (place == eqBandCount || type < 0) {
            addLine(lost, "Bands of the equaliser of " + text(t.name));
            continue;
        }
        CEQ* band = strip->eq[place++];
        band->setFilterType(type);
        band->setFrequency(float(b.hz));
        band->setGain(float(b.gainDb));
        band->setQ(float(b.q));
        band->active = b.on;
    }
}

void DawDevices::fillStrip(const DawTrack& t, COutputChannel* strip) {
    const auto lose = [&](const DawDevice& d) {
        addLine(lost, "Effect " + text(d.name) + " of " + text(t.name));
    };
    if (strip) setBands(t, strip);
    for (const DawDevice& d : t.devices) {
        if (d.role == "instrument" || d.id == dawKit) continue;
        std::unique_ptr<CComp> made;
        if (strip && d.id == dawRack)
            made = rackOf(d);
        else if (strip)
            made = pluginOf(d);
        if (!made) {
            lose(d);
            continue;
        }
        made->enabled = d.on;
        made->listKind = listInsert;
        made->ownerChannel = strip;
        strip->inserts.add(made.release());
    }
}

std::string dawIdOf(CVST* plugin) {
    const PluginFile file(plugin->fileName);
    std::string id = file.inside.asChar();
    if (file.format() == PluginFormat::vst2)
        return std::to_string(uint32_t(plugin->loaded()->uniqueId()));
    if (file.format() == PluginFormat::vst3 && id.size() == 32)
        for (const size_t at : {20, 16, 12, 8}) id.insert(at, "-");
    return id;
}
