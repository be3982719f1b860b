#pragma once

#include "instruments/SamplerContent.h"

class CComp;
class CDrumSound;
class CSeq;
class CTrack;

/// Drum sounds and their clips as a song tells them: the clips first, once for all tracks, then the
/// sounds with each drum track.
class KitReader : public SamplerContent {
public:
    static constexpr int mostDrums = 256; ///< of a track: events name them by a byte
    /// Of one song, against files made of heads only.
    static constexpr int mostSounds = 4096, mostInserts = 4096, mostChannels = 4096;

    CTrack* track = nullptr;     ///< that the sounds which come go to
    CDrumSound* sound = nullptr; ///< the latest, null after one that was dropped
    CComp* insert = nullptr;     ///< the latest of it

    explicit KitReader(CSeq* song);

    /// Has what comes go to another track, which may be null, and returns it.
    CTrack* openTrack(CTrack* next);
    /// Reads the body of "smp", "sound" or "soundmod".
    void read(const char* block, CStream& body);
    /// Reads a component into the inserts of the latest sound; it may be refused.
    void readInsert(CStream* stream, int64_t end);
    /// Adds a channel to the latest insert.
    void addInput(int channels);
    void addOutput(int channels);
    /// Moves the clips to the song.
    void giveClips();

protected:
    std::unique_ptr<CSound> newSound(int kind) override;
    void keepSound(CSound* made) override;

private:
    CSeq* seq;
    int sounds = 0, inserts = 0, channelsMade = 0;

    bool takeChannel();
};
