#pragma once

#include "base/CStr.h"
#include "base/Random.h"
#include "engine/CProgram.h"
#include "instruments/CLayer.h"
#include "instruments/CSound.h"

class CDelay;
class CQV;
class CReverb;
class CSampler;

constexpr int progSends = 2;
constexpr int progMacros = 8;

/// A knob of a program: a name for what one controller moves on its sounds, by their `ccMap`. The
/// number of the controller is that of the sampler's parameter too.
struct ProgMacro {
    CStr name;
    int controller = -1;           ///< -1: the knob is not used
    float low = 0.0f, high = 1.0f; ///< from where to where it turns
};

/// A program of the sampler: layers of sounds, and two send effects that all of them share.
class CSynthProg : public CProgram {
public:
    CSampler* owner;                    ///< null for the sounds of a drum track
    Shared<float> bend[16];             ///< -1 to 1; element 0 holds for all channels
    ListOf<CLayer> layers;              ///< owned
    Shared<CLayer*> layer{nullptr};     ///< the one that the editor shows
    std::unique_ptr<CFX> fx[progSends]; ///< a CReverb, on, and a CDelay, off
    CStr family; ///< its category, empty when nothing told; interface thread, as the two below
    CStr words;  ///< what else it may be looked for by, apart by spaces
    ProgMacro macros[progMacros];
    Random chance; ///< of its own, so that others and threads change nothing. Graph holder.

    /// The delay plays in the memory that all programs of the sampler share.
    CSynthProg(CQV* host, CSampler* sampler);
    ~CSynthProg() override;
    CSynthProg(const CSynthProg&) = delete;
    CSynthProg& operator=(const CSynthProg&) = delete;

    CReverb* reverb() const;
    CDelay* delay() const;

    /// The song starts: chance begins with a number of its own, and effects as `CFX::start` says.
    /// Graph holder.
    void start(unsigned number);
    /// Runs the send effects from their inputs and adds them into the channel. Graph holder.
    void process(float* left, float* right, int frames, int offset);
    /// Silences the inputs of the send effects.
    void clearSends(int frames);
    /// Lets the meters of all sounds fall. Interface thread.
    void idle();
    void setRate(float hz);
    void setFrames(int frames);

    /// Appends a layer, owned from now on, and makes it the current one.
    CLayer* addLayer();
    /// Calls `visit(CSound*)` for every sound of every layer.
    template <class F>
    void eachSound(F&& visit);
    bool hasSound(const CSound* wanted) const; ///< which may be gone; any layer

private:
    CQV* host;
};

template <class F>
void CSynthProg::eachSound(F&& visit) {
    for (CLayer* l : layers)
        for (CSound* s : l->sounds) visit(s);
}
