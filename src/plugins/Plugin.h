#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

/// Where the song is, as plug-ins are told.
struct PluginTime {
    double frames = 0.0; ///< played since position 0
    double rate = 44100.0;
    double beats = 0.0; ///< quarter notes at the start of the block, as the next three
    double barStart = 0.0;
    double loopStart = 0.0, loopEnd = 0.0;
    double tempo = 120.0; ///< beats per minute
    int numerator = 4, denominator = 4;
    bool playing = false, recording = false, looping = false;
    bool jumped = false; ///< with this block
};

/// In what kind of work the calling thread is.
enum class PluginLevel { other, interface, realtime, offline };

/// What a plug-in asks of whom it is loaded by. Any thread, but where told.
class PluginHost {
public:
    virtual double sampleRate() const = 0;
    virtual int blockFrames() const = 0;
    virtual PluginLevel level() const = 0;
    virtual PluginTime songTime() const = 0;
    virtual CStr libraryFolder() const = 0;
    /// The plug-in has moved a parameter by itself, or its user has.
    virtual void parameterMoved(int index, float share) = 0;
    /// It has by itself, as told on a thread that may not act on it.
    virtual void parameterDrifted(int index, float share) = 0;
    virtual void gestureBegins(int index) = 0;
    virtual void gestureEnds(int index) = 0;
    /// A message from inside `process`; those from elsewhere are dropped.
    virtual void sendMidi(int frame, int data) = 0;
    virtual void sizeEditor(CPoint logical) = 0; ///< in pixels of the plug-in
    virtual void idleEditor() = 0;
    virtual void channelsChanged() = 0; ///< their number, or the latency
    virtual void displayChanged() = 0;  ///< names, programs, values

    // Of one that runs elsewhere.
    virtual unsigned blockNumber() const = 0; ///< changes with every block
    /// Calls it while no block is in the plug-in.
    virtual void betweenBlocks(const std::function<void()>& change) = 0;
    virtual void pluginLost() = 0;     ///< what it is asked is answered by what was heard last
    virtual void pluginReturns() = 0;  ///< the last time that it is
    virtual void pluginReturned() = 0; ///< anew, and has to be told all

protected:
    ~PluginHost() = default;
};

/// A plug-in of any format, loaded. Nothing that it throws comes out of a call. Interface thread,
/// but for `process`, `addMidi`, parameters and plain words of it.
class Plugin {
public:
    static constexpr int mostPins = 128;
    using Bytes = std::vector<unsigned char>;

    Plugin() = default;
    virtual ~Plugin() = default;
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    virtual CStr vendor() = 0;
    virtual CStr product() = 0;
    virtual int32_t uniqueId() const = 0;
    virtual bool isInstrument() const = 0;
    virtual bool sendsMidi() = 0;

    // What it has may change while it is open: an index beyond is answered by nothing.
    virtual int inputs() const = 0; ///< pins, each a mono signal
    virtual int outputs() const = 0;
    virtual bool stereoPair(bool input, int index) = 0; ///< it and the next belong together
    virtual int latency() const = 0;                    ///< frames; may be below 0

    virtual int numParams() const = 0;
    virtual CStr paramName(int index) = 0;
    virtual CStr paramText(int index) = 0;   ///< with its unit
    virtual std::vector<CStr> paramTexts() { ///< of all
        std::vector<CStr> texts;
        for (int i = 0; i < numParams(); i++) texts.push_back(paramText(i));
        return texts;
    }
    virtual void setParam(int index, float share) = 0; ///< any thread, as the next
    virtual float param(int index) = 0;

    // Many formats have no programs, or some that cannot be renamed.
    virtual int numPrograms() const { return 0; }
    virtual int program() { return 0; }
    virtual void setProgram(int /*index*/) {}
    virtual CStr programName(int /*index*/) { return ""; }
    virtual CStr currentProgramName() { return programName(program()); }
    virtual void renameProgram(const CStr& /*name*/) {} ///< the current one

    virtual bool hasChunks() const = 0;
    virtual Bytes chunk(bool whole) = 0; ///< of all programs, or of the current one
    virtual bool setChunk(const Bytes& data, bool whole) = 0;

    /// Files that it works with and its user chooses: empty paths where none is known.
    struct File {
        CStr name, path;
    };
    virtual std::vector<File> files() { return {}; }
    virtual void setFile(int /*index*/, const CStr& /*path*/) {}

    virtual void setRate(double rate) = 0;
    virtual void setBlock(int frames) = 0;
    virtual void setRunning(bool on) = 0; ///< `process` is called only while it is

    // Whoever renders.
    /// For the coming `process`, in order of time: frames from its start.
    virtual void addMidi(int frame, int data) = 0;
    /// Begins what the coming `process` of the same does, where that is done elsewhere.
    virtual void begin(float** /*in*/, int /*frames*/) {}
    /// The outputs are cleared before. False where it threw.
    virtual bool process(float** in, float** out, int frames) = 0;

    virtual bool hasEditor() const = 0;
    /// Opens it in an X window. Its size in pixels of the plug-in; 0 where it tells none.
    virtual CPoint openEditor(unsigned long window) = 0;
    virtual void closeEditor() = 0;
    virtual void idleEditor() = 0;
    virtual void idle() = 0;

    // Of one that runs in another process.
    /// It was not there for the latest `process`, or not in time. Whoever renders.
    virtual bool missedBlock() const { return false; }
    virtual int64_t workedNs() const { return -1; } ///< in that `process`; -1: as long as it took
    virtual bool isolated() const { return false; }
    virtual bool failed() const { return false; } ///< that process has ended: it plays nothing
    virtual CStr whyFailed() const { return ""; }
    virtual int crashes() const { return 0; } ///< of its library so far
    virtual void restart() {}                 ///< after it has failed: loads it anew

protected:
    bool isParam(int index) const { return index >= 0 && index < numParams(); }
    /// False, with `why`, for a number of pins that nothing here has room for.
    static bool pinsFit(int in, int out, CStr& why) {
        if (in >= 0 && in <= mostPins && out >= 0 && out <= mostPins) return true;
        why = "The plug-in has more than 128 inputs or outputs.";
        return false;
    }
};
