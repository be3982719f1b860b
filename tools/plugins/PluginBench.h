#pragma once

#include <memory>
#include <vector>

class CQV;
class CVST;

/// Plays a plug-in by itself, in a host without devices: an impulse, a chord and then noise go in.
/// What it answers notes with counts as sound.
class PluginBench {
public:
    static std::unique_ptr<CQV> newHost(); ///< which the program's own host is from then on
    explicit PluginBench(CQV* root) : host(root) {}

    std::vector<float> play(CVST& plugin); ///< all that comes out, from its rest on

private:
    static void feed(CVST& plugin, int block);

    CQV* host;
};
