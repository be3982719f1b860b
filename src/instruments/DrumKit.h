#pragma once

#include "instruments/SamplerContent.h"

class CDrumSound;
class CComp;
class CREX2;
class CSample;
class CSampleClip;
class CUndo;

/// Drum sounds with their clips, on their way into the layer of a drum track: from a kit file, the
/// built-in kit, or a sliced loop. Complete and linked nowhere; owns what was not taken. Damage is
/// treated as told at SamplerContent, with the same reports. Interface thread.
///
/// A kit file has no block "filetype"; in one that has, such as the file of a sampler's program,
/// there is no kit.
class DrumKit : public SamplerContent {
public:
    ListOf<CDrumSound> sounds; ///< that name `target` as their layer
    CStr name;                 ///< empty when nothing told one

    /// `target` is the layer that the sounds will live in, `comp` the component of their strips.
    DrumKit(CQV* root, CLayer* target, CComp* comp);
    ~DrumKit() override;

    /// Adds kick, snare, clap, closed and open hat; the hats choke each other.
    void addStandard();
    /// Adds a sound of an audio file; false for one that can't be read.
    bool addFile(const CStr& path);
    /// Adds a sound for each slice of a loop.
    void addSlices(CREX2& loop);

    /// The sounds will live in another layer than that which the kit was made for, and their strips
    /// belong to another component.
    void retarget(CLayer* target, CComp* strips);
    /// Pixels by which a track opened for these sounds grows.
    int height() const;
    /// Moves the sounds into their layer and the clips to `drumClips`, which owns them from then
    /// on; by the step `undo` if there is one, else at once.
    void take(CList& drumClips, CUndo* undo);

protected:
    bool readBlock(const CStr& block, CStream& body) override;
    std::unique_ptr<CSound> newSound(int kind) override;
    void keepSound(CSound* made) override;

private:
    CLayer* layer;
    CComp* comp;

    CSound* addClip(CSampleClip* clip);
};

/// The content of an audio file of any format, for a sound to play; of more than two channels mixed
/// to two. Null where it can't be read.
std::unique_ptr<CSampleClip> openClip(const CStr& path);

/// Writes a layer of drum sounds, with their first clips, as a kit file. It has no place for the
/// strip of a sound and the effects on it, which belong to the song.
void writeDrumKit(CStream* stream, const CStr& name, const CLayer& layer);

/// Fills a sample with a sound that was worked out, within -1 to 1: one channel of 16 bits at
/// 44100 Hz.
void takeValues(CSample* sample, const CStr& name, const std::vector<float>& values);

/// Resources of `loadResource`.
enum DrumResource : int {
    drumKick = 0,
    drumSnare = 1,
    drumClap = 2,
    drumHatOpen = 3,
    drumHatClosed = 4,
};

/// Fills a sample with a sound of the built-in kit: name, format, frames. Another number leaves it
/// as it is.
void loadResource(CSample* sample, int resource);
void getKick(CSample* sample);
void getSnare(CSample* sample);
void getClap(CSample* sample);
void getHatOpen(CSample* sample);
void getHatClosed(CSample* sample);
