#pragma once

#include <memory>
#include <vector>

class CComp;
class COutputChannel;
class CSeq;
class CTrack;

// Where a track leads: the notes of an instrument track to an instrument, a MIDI output or whatever
// takes notes, the sound of an audio or drum track to an audio output or a rack. Interface thread.

/// The components of the project that it may lead to, in their order; none for a folder.
std::vector<CComp*> trackTargets(CSeq* seq, CTrack* track);
/// The first of these that a cable leads to, null when there is none.
CComp* trackTarget(CSeq* seq, CTrack* track);
/// One step, "Instrument" or "Output": of these it leads to `to` alone, to none if that is null.
/// False, and nothing happens, for other components, and where it does so already.
bool setTrackTarget(CSeq* seq, CTrack* track, CComp* to);
/// The same for several, in one step; those that cannot lead there stay as they are.
bool setTrackTargets(CSeq* seq, const std::vector<CTrack*>& tracks, CComp* to);

/// An instrument that is complete and linked nowhere comes into the graph; instrument tracks among
/// `tracks`, of which the first is one, play it, all in one step.
void setTrackInstrument(CSeq* seq, const std::vector<CTrack*>& tracks,
                        std::unique_ptr<CComp> instrument);

// Where an audio track records from.

/// The audio inputs of the project, in their order.
std::vector<COutputChannel*> trackSources(CSeq* seq);
/// The first of these that a cable leads from, null when there is none.
COutputChannel* trackSource(CSeq* seq, CTrack* track);
/// One step, "Input": of these, audio tracks among `tracks` record `from` alone, none if that is
/// null. False where nothing changes.
bool setTrackSources(CSeq* seq, const std::vector<CTrack*>& tracks, COutputChannel* from);
