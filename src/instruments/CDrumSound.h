#pragma once

#include "instruments/CLayer.h"
#include "instruments/CWavSound.h"

class CComp;
class COutputChannel;

/// Bits of a drum sound's `flags`.
constexpr unsigned drumOpen = 1; ///< its lane is opened in the track

/// A drum of a drum track: plays a clip through a mixer strip of its own. What stands in files as a
/// sample sound with `reserved` 1.
///
/// The song plays it in this way, as holder of the graph: once a block `clearStrip`; per voice
/// `startHit` at its event and then `process` into the buffers of `output`, from its frame on;
/// after all voices `output->processFX`; then the sends of `output`, and `addStrip`.
class CDrumSound : public CWavSound {
public:
    static constexpr int closedHeight = 20, openHeight = 64; ///< pixels

    Shared<int> shownParam{0};                    ///< that its lane shows
    const std::unique_ptr<COutputChannel> output; ///< with buffers of the host's block

    /// `comp` is the component of the strip. Takes block size and rate from the host.
    CDrumSound(CLayer* owner, CQV* host, CComp* comp);
    ~CDrumSound() override;

    /// Take the strip and the inserts to what the engine runs at. Graph holder.
    void setFrames(int frames);
    void setRate(double rate);

    CStr getId() const; ///< the name without its extension

    // The lane in the opened track. Interface thread.
    bool opened() const { return hasFlag(drumOpen); }
    int getHeight() const { return opened() ? openHeight : closedHeight; }
    /// Opens or closes it and returns by how many pixels the track grows.
    int toggleLane();

    /// Makes `voice` sound, from the first frame of the clip at its own key. It belongs to the
    /// choke group of the sound. `velocity` 0 to 1 scales the level on top of what the sound does
    /// with velocity, `panning` -1 to 1 is added, `tune` is a factor of the speed; `root` the host.
    void startHit(CVoice* voice, CQV* root, float velocity, float panning, float tune);
    void clearStrip(int frames);
    /// Adds the first `frames` of the strip to the buffers of a channel.
    void addStrip(COutputChannel* to, int frames) const;
};

/// The sounds of a layer of drums, for a range-based `for`.
inline ListView<CDrumSound> drumSounds(const CLayer& layer) {
    return listAs<CDrumSound>(layer.sounds);
}
/// Pixels above the lane of a sound of this layer.
int getDrumTop(const CLayer& layer, const CDrumSound* sound);
