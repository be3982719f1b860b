#pragma once

#include "base/CList.h"
#include "base/CObject.h"

#include <cstdint>
#include <vector>

class COutputChannel;
class CQV;
class CComp;
class CSample;

/// Follows a render, called for every block by the thread that renders.
class RenderProgress {
public:
    virtual ~RenderProgress() = default;
    /// `done` 0 to 1; false cancels. Whoever shows windows repaints and pumps events here.
    virtual bool onRender(float done) = 0;
};

/// Renders the song offline: pulls blocks through the whole engine as fast as they come and writes
/// the captured channels to files. Loops and browser previews stay out.
class CRender : public CObject {
public:
    CQV* qv;
    CComp* comp; ///< what is rendered, normally the sequencer
    bool cancelled = false;
    int rate = 44100; ///< frames per second
    float progress = 0.0f;
    int64_t framesWritten = 0; ///< of each file, by the last `process`

    CRender(CQV* host, CComp* component);

    /// The file that a channel is written to, in its own format, opened and owned by the caller.
    void setTarget(COutputChannel* channel, CSample* file);
    /// Renders `lengthTicks` from `startTick` on. `outputs` lists the captured COutputChannels;
    /// their peak holds are cleared first. With `mix` they are summed into the first file, else
    /// each goes to its own. The latency of what is captured is left out. `follower` may be null.
    /// Interface thread; takes the graph for the whole time, stops the transport before, and puts
    /// rate, tempo and position back.
    void process(double startTick, double lengthTicks, CList* outputs, bool mix,
                 RenderProgress* follower);

private:
    struct Target {
        COutputChannel* channel;
        CSample* file;
        int64_t skip = 0;    ///< latency still to be left out, in frames
        int64_t written = 0; ///< frames, by this `process`
    };
    int64_t hostLatency() const;
    int64_t latencyOf(COutputChannel* channel) const;
    void run(double lengthTicks, CList* outputs, bool mix, RenderProgress* follower);
    void runPreRoll();
    void runTail(CList* outputs);
    void runBlock(int n);
    void captureAll(CList* outputs, int n, bool mix);
    void capture(const Target& target, int n, bool mix);
    void write(Target& target, int n);

    std::vector<Target> targets;
    std::vector<float> left, right; ///< one host block
};
