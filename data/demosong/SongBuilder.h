#pragma once

#include "sequencer/song/Events.h"

#include <initializer_list>

class CObject;
class CPart;
class CQV;
class CSample;
class CSeq;
class CSongTrack;
class CStr;
class CSubTrack;
class CTrack;

/// How hard a character of a drum line is hit: 'o' soft, 'x' normal, 'X' accented, others 0.
int stepVelocity(char c);

/// Collects the notes of one part in bars and steps; the part gets them when this dies.
class PartBuilder {
public:
    explicit PartBuilder(CPart* target) : part(target) {}
    ~PartBuilder();
    PartBuilder(const PartBuilder&) = delete;
    PartBuilder& operator=(const PartBuilder&) = delete;

    /// Bar and step within the part; length in steps.
    void note(int bar, int step, int length, int key, int velocity);
    /// A hit of a sound of the kit in the part of a drum track; velocity as that of notes.
    void hit(int bar, int step, int sound, int velocity);
    CPart* getPart() const { return part; }
    int steps() const; ///< sixteenths that the part lasts
    /// Hands the notes over now.
    void close();

private:
    CPart* part; ///< linked to its track, not owned
    EventCollector events;
};

/// A point of an automation curve, in bars and steps from the start of its part.
struct CurvePoint {
    int bar, step;
    float value;
    float bend = 0.0f; ///< of the way that leads to this point
};

/// Puts a song together in the host's empty project, out of tracks, parts and points.
class SongBuilder {
public:
    explicit SongBuilder(CQV* host);

    /// A new instrument track.
    CTrack* track(const CStr& name);
    /// A new drum track with the built-in kit.
    CTrack* drumTrack(const CStr& name);
    /// A part of a track from bar to bar.
    CPart* part(CTrack* track, int fromBar, int toBar);
    /// A linked copy of a part, at another bar.
    void ghost(CTrack* track, CPart* original, int atBar);
    /// A new audio track.
    CTrack* audioTrack(const CStr& name);
    /// A part of an audio track that stretches all of a sample to the bars there.
    CPart* clip(CTrack* track, CSample* sample, int fromBar, int toBar);
    /// A lane of a track that moves parameter `param` of `object`.
    CSubTrack* lane(CTrack* track, const CStr& name, CObject* object, int param);
    /// Points of a lane, in the part of its track that starts at `fromBar`, which is made when
    /// there is none.
    void curve(CTrack* track, CSubTrack* lane, int fromBar, int toBar,
               std::initializer_list<CurvePoint> points);
    void tempo(int bar, float bpm);
    void signature(int bar, int beats, int unit);
    void marker(int fromBar, int toBar, const CStr& name);
    /// Puts everything in order and sets the locators around the song.
    CSeq* finish(int endBar);

    CQV* host;
    CSeq* seq; ///< owned by the host

private:
    CSongTrack* songTrackOf(CTrack* track);
    CPart* partAt(CTrack* track, int bar);
};
