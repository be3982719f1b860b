#pragma once

#include "base/CStr.h"
#include "interchange/DawSong.h"

#include <memory>
#include <string>
#include <vector>

class CComp;
class COutputChannel;
class CQV;
class CVST;
class PluginList;
class ScratchFolder;
class ZipReader;

/// Makes what the devices of an exchange file stand for. Nothing of it is linked: the caller does
/// that. What cannot be made is told in `lost`. Interface thread.
class DawDevices {
public:
    /// All outlive it; `known` plug-ins may be null.
    DawDevices(CQV* host, const ZipReader& zip, const ScratchFolder& scratch,
               const PluginList* known, std::vector<CStr>& lost);

    /// What a track plays, ready to be linked; null without one.
    std::unique_ptr<CComp> instrumentOf(const DawTrack& t);
    /// Equaliser and inserts of a strip that is not linked yet.
    void fillStrip(const DawTrack& t, COutputChannel* strip);
    /// The file of a device's state, empty without one.
    std::string stateOf(const DawDevice& device);

private:
    std::unique_ptr<CComp> samplerOf(const DawDevice& device);
    std::unique_ptr<CComp> rackOf(const DawDevice& device);
    std::unique_ptr<CVST> pluginOf(const DawDevice& device);
    CStr pathOf(const DawDevice& device) const;
    void setBands(const DawTrack& t, COutputChannel* strip);

    CQV* host;
    const ZipReader& zip;
    const ScratchFolder& scratch;
    const PluginList* known;
    std::vector<CStr>& lost;
    int states = 0; ///< files that were taken out of the archive
};

/// The id of an opened plug-in in such files: of VST 2 the number of its maker, of VST 3 with
/// dashes, of CLAP its name.
std::string dawIdOf(CVST* plugin);
