#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

#include <cstdint>
#include <span>
#include <vector>

class COutputChannel;
class CQV;
class CComp;
class CSample;
class CSoundCloudAddOn;

/// Follows a render, called for every block by the thread that renders.
class RenderProgress {
public:
    virtual ~RenderProgress() = default;
    /// `done` 0 to 1; false cancels. Whoever shows windows repaints and pumps events here.
    virtual bool onRender(float done) = 0;
};

/// What is rendered of the song.
enum RenderRange : int { rangeSong = 0, rangeLocators = 1, rangeSelected = 2 };
const char* renderRangeName(int rangeMode); ///< of RenderRange, for the user

/// What it is written as; MP3 by the outside tool `lame`.
enum RenderFormat : int { renderWav = 0, renderAiff = 1, renderMp3 = 2 };

// What a dialog offers for `rate`, `bits` and `bitrate`; others within their ranges are taken too.
constexpr int renderRates[] = {22050, 44100, 48000, 96000, 192000};
constexpr int renderBits[] = {16, 24, 32};
constexpr int renderBitrates[] = {64, 96, 128, 160, 192, 224, 256, 320};

/// For `tailMs`: until what rings on is below -96 dB and stays there, but 30 seconds at most.
constexpr int tailAuto = -1;
constexpr int renderTails[] = {tailAuto, 0, 1000, 2000, 5000, 10000};

/// Renders the song offline: pulls blocks through the whole engine as fast as they come and writes
/// the captured channels to files. Loops and browser previews stay out. It also keeps what the user
/// has chosen; RenderExport.h drives it by that. A dialog binds to the fields, which begin as
/// `chooseUsual` leaves them, calls `exportSong`, and keeps the choices by `writeSettings`.
class CRender : public CObject {
public:
    CQV* qv;
    CComp* comp;                    ///< what is rendered, normally the sequencer
    CStr folder, filename;          ///< of the export: several files go to `folder`
    ListOf<COutputChannel> outputs; ///< not owned: the channels to capture
    bool cancelled = false;         ///< by the last `process`
    int rangeMode = rangeSong;
    int start = 0; ///< ticks
    int format = renderWav;
    int rate = 44100;  ///< frames per second, 8000 to 192000
    int chs = 2;       ///< 1 or 2
    int bits = 16;     ///< 16, 24 or 32
    int bitrate = 128; ///< of MP3, kilobits per second, 32 to 320
    int tailMs = 0;    ///< that the files go on after the range, or `tailAuto`
    float progress = 0.0f;
    int multiTrack = 0;   ///< 1: a file for each selected track and each send bus
    bool mixToOne = true; ///< all `outputs` are summed into one file
    bool freeze = false;  ///< a dialog has nothing to ask, but shows how far a freeze is
    bool keepPart = true; ///< what was cancelled stays as far as it got, unless it replaces a file
    bool upload = false;  ///< the file goes to `addOn` afterwards; never with `multiTrack`
    CStr songName;        ///< of the upload
    CSoundCloudAddOn* addOn = nullptr;       ///< null while none is loaded; not owned
    int64_t framesWritten = 0;               ///< of each file, by the last `process`
    float peakLeft = 0.0f, peakRight = 0.0f; ///< of all that was written, before it was clipped

    CRender(CQV* host, CComp* component);

    /// What an export of the project begins with: `tailAuto`, the choices of the settings, the
    /// project's name without extension as `filename`, and the audio outs as `outputs`.
    void chooseUsual();
    /// The choices in section "render" of the settings file. What is out of range there becomes the
    /// default.
    void readSettings();
    void writeSettings() const;
    void setFilename(const CStr& name) { filename = name; }

    /// The file that a channel is written to, in its own format, opened and owned by the caller.
    void setTarget(COutputChannel* channel, CSample* file);
    void clearTargets() { targets.clear(); }
    /// Renders `lengthTicks` from `startTick` on. `captured` lists COutputChannels;
    /// their peak holds are cleared first. With `mix` they are summed into the first file, else
    /// each goes to its own. The latency of what is captured is left out. In the tail a song that
    /// goes on behind the range stands, and what was played rings on. `follower` may be null.
    /// Interface thread; takes the graph for the whole time, stops the transport before, and puts
    /// rate, tempo and position back. Before and after it the graph is silent.
    void process(double startTick, double lengthTicks, ListOf<COutputChannel>* captured, bool mix,
                 RenderProgress* follower);

private:
    struct Target {
        COutputChannel* channel;
        CSample* file;
        int64_t skip = 0;    ///< latency still to be left out, in frames
        int64_t written = 0; ///< frames, by this `process`
        int64_t audible = 0; ///< frames up to the last one that can be heard
    };
    /// Who follows, what is captured, and how.
    struct Job {
        ListOf<COutputChannel>* captured;
        bool mix;
        RenderProgress* follower;
    };
    int64_t hostLatency() const;
    int64_t latencyOf(COutputChannel* channel) const;
    std::span<Target> writers(const Job& job);
    int framesIn(double ticks) const;
    void run(double startTick, double lengthTicks, const Job& job);
    void runRange(double lengthTicks, const Job& job);
    void runRest(bool stop, const Job& job);
    bool hasDiedAway(int64_t rangeEnd, const Job& job);
    void cutQuiet(int64_t rangeEnd, const Job& job);
    void runBlock(int n);
    void captureAll(int n, const Job& job);
    void capture(const Target& target, int n, bool mix);
    void write(Target& target, int n);

    std::vector<Target> targets;
    std::vector<float> left, right; ///< one host block
};
