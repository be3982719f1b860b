#pragma once

#include "base/Atomic.h"
#include "instruments/CSound.h"

class CSampleClip;

/// Plays a clip, transposed from its own key, with an optional loop.
class CWavSound : public CSound {
public:
    static constexpr int maxClips = 127;

    int clipCount = 0;
    Shared<CSampleClip*> clips[maxClips]; ///< not owned; only the first is played

    CWavSound(CLayer* owner, CQV* host);

    /// The first clip names the sound by its file; what comes after `maxClips` is dropped. Before
    /// the sound is linked.
    void addSample(CSampleClip* clip);

    void process(float* left, float* right, CVoice* voice, int frames) override;
    void processVoices(CVoice** voices, int count, float* left, float* right, int frames) override;
    void startVoice(CVoice* voice) override;

private:
    void renderSeated(CVoice** voices, int count, float* left, float* right, int frames);
};
