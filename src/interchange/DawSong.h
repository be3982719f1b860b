#pragma once

#include <string>
#include <vector>

// A song as exchange files tell it: plain values, without the engine. Times are quarter notes;
// seconds where a name says so. What a file may leave out has the value that it stands for then.

struct DawNote {
    double time = 0.0, duration = 0.0; ///< from the start of the content
    int channel = 0, key = 60;
    double velocity = 100.0 / 127.0; ///< 0 to 1
};

/// What points move.
enum class DawTarget {
    none,
    parameter, ///< with an id
    controller,
    pitchBend,
    pressure,
    polyPressure,
    program,
    gain,
    pan,
    transpose
};

struct DawPoint {
    double time = 0.0, value = 0.0;
    bool hold = false; ///< until the next one; else it goes there in a line
};

/// A row of points. Values of `parameter`, `gain` are in the unit of the parameter (strips: linear
/// gain), those of notes and controllers 0 to 1, `program` 0 to 127, `transpose` semitones.
struct DawPoints {
    DawTarget target = DawTarget::none;
    std::string parameter;       ///< id
    int channel = 0, number = 0; ///< of the controller or key
    std::vector<DawPoint> points;
};

/// A range of an audio file in a clip: `contentSeconds` of the file stand at `beat` of the clip,
/// and so on to the next pair. Without warps it plays at its own speed from the clip's start on.
struct DawWarp {
    double beat, contentSeconds;
};

struct DawAudio {
    std::string file; ///< name in the archive, or a full path if `external`
    bool external = false;
    std::string algorithm;
    int channels = 2, rate = 44100;
    double fileSeconds = 0.0;
    std::vector<DawWarp> warps;
    // Without warps:
    double speed = 1.0;        ///< source seconds per second
    double startSeconds = 0.0; ///< of the source at the start of the clip, whatever `playStart` is
};

/// Content and the window through which it is heard: what stands at `playStart` of the content
/// sounds at `time`.
struct DawClip {
    std::string name;
    int colour = -1; ///< 0xRRGGBB, -1 none
    double time = 0.0, duration = 0.0, playStart = 0.0;
    double loopStart = 0.0, loopEnd = 0.0; ///< no loop unless the end is behind the start
    double fadeInSeconds = 0.0, fadeOutSeconds = 0.0;
    bool enabled = true;
    std::vector<DawNote> notes;
    std::vector<DawPoints> points;
    std::vector<DawAudio> audio; ///< none or one
    std::vector<DawClip> clips;  ///< in it
};

struct DawSend {
    std::string destination, levelId;
    double level = 0.0; ///< linear
};

struct DawDevice {
    std::string element; ///< kind of device by the name of its element
    std::string name, id, role, state;
    bool on = true;
};

struct DawBand {
    std::string type;
    double hz = 1000.0, gainDb = 0.0, q = 1.0;
    bool on = true;
};

struct DawTrack {
    std::string id, name, channelId, role = "regular", destination, content;
    std::string volumeId, panId, muteId;
    int colour = -1;
    int parent = -1; ///< index of the folder track, -1 none
    bool isFolder = false, hasChannel = false;
    double volume = 1.0; ///< linear
    double pan = 0.5;    ///< 0 left to 1 right
    bool mute = false, solo = false;
    std::vector<DawSend> sends;
    std::vector<DawDevice> devices;
    std::vector<DawBand> bands; ///< of the equaliser in front of the effects
    std::vector<DawClip> clips;
    std::vector<DawPoints> points;
};

struct DawMarker {
    double time = 0.0;
    std::string name;
};
struct DawTempo {
    double time = 0.0, bpm = 120.0;
    bool ramp = false;
};
struct DawSignature {
    double time = 0.0;
    int num = 4, den = 4;
};

struct DawSong {
    std::string title, application;
    double bpm = 120.0;
    int num = 4, den = 4;
    std::vector<DawTrack> tracks; ///< folders before what is in them
    std::vector<DawMarker> markers;
    std::vector<DawTempo> tempos;
    std::vector<DawSignature> signatures;
    std::vector<std::string> lost; ///< what the file has and this does not, a line each
};
