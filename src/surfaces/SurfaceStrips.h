#pragma once

#include <string>
#include <vector>

class COutputChannel;
class CQV;
class CTrack;

/// A strip as control surfaces number them.
struct SurfaceStrip {
    COutputChannel* channel = nullptr; ///< null: none at this place
    CTrack* track = nullptr;           ///< that it belongs to; null for groups and sends
    std::string name;
};

/// The strips of the song's tracks, then groups and sends, each once. Interface thread.
std::vector<SurfaceStrip> surfaceStrips(CQV* host);
SurfaceStrip mainStrip(CQV* host); ///< the first audio out
/// Selects a track of the song alone; null does nothing.
void selectTrackAlone(CQV* host, CTrack* track);
