#pragma once

#include "data/demosong/SongBuilder.h"

class CSample;
class CSampler;

/// The sound of the kit that plays a key of `DrumKey`, -1 where it has none.
int kitSoundOf(int key);

/// An automation lane of the song, ready to take points.
struct DemoLane {
    SongBuilder* song = nullptr;
    CTrack* track = nullptr;
    CSubTrack* lane = nullptr;

    /// Points in bars from `fromBar`, in a part of the track that starts there.
    void curve(int fromBar, int toBar, std::initializer_list<CurvePoint> points) {
        song->curve(track, lane, fromBar, toBar, points);
    }
};

/// The tracks of the demo song with their instruments, levels and lanes.
class DemoSounds {
public:
    explicit DemoSounds(SongBuilder& song);

    CTrack* kit;   ///< a drum track: what the clips of the built-in kit play
    CTrack* drums; ///< the rest of the drums
    CTrack* bass;
    CTrack* pad;
    CTrack* pluck;
    CTrack* lead;
    CTrack* harmony;
    CTrack* guitar;
    CTrack* beat; ///< an audio track, as the next
    CTrack* voices;
    CSample *beatLoop, *voiceLoop; ///< two bars and four, of the pool
    DemoLane padCutoff, padVolume, pluckCutoff, pluckPan;

private:
    void mix();
    void group();
    void duckBehindDrums();
    CSampler* instrument(CTrack* track, int program, float volume, float pan);
    DemoLane channelLane(CTrack* track, CSampler* source, const char* name, int param);
    DemoLane brightnessLane(CTrack* track, CSampler* source);

    SongBuilder& song;
    CSample* loop(const char* name);

    CSampler* players[7] = {}; ///< in the order of the tracks, drums first
};
