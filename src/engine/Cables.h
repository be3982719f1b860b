#pragma once

#include "base/CObject.h"
#include "base/Stored.h"
#include "engine/plan/PlanFade.h"

#include <vector>

class CComp;
class CInputChannel;
class CList;
class CMIDIQ;
class COutputChannel;
class CQV;
class CUndo;
class ForgetSet;

/// Deepest chain of cables that a plan or a search follows; what hangs beyond is silent.
constexpr int maxPullDepth = 256;

/// An audio in-edge: stored with its destination, which owns it.
class CAudioCable : public CObject {
public:
    CAudioCable();

    CComp* fromComp = nullptr;
    CComp* toComp = nullptr;
    CInputChannel* toChannel = nullptr;
    COutputChannel* fromChannel = nullptr;
    Stored<unsigned char> muted{0}; ///< brings nothing

    /// Leaves out the way to and from silence. Nothing plays, or the graph is held.
    void settleMute() { gate = PlanFade::still(muted != 0); }
    mutable PlanFade gate; ///< follows `muted`; whoever runs the step that reads the cable
};

/// A MIDI in-edge: stored with its destination, which owns it.
class CMIDICable : public CObject {
public:
    CMIDICable();

    CComp* fromComp = nullptr;
    CComp* toComp = nullptr;
    CMIDIQ* toPort = nullptr;
    CMIDIQ* fromPort = nullptr;
    Stored<unsigned char> muted{0}; ///< brings nothing
};

// Of a cable of either kind.
bool isMuted(const CObject* cable);
/// Of one that is not played yet; for others there is `muteOfCable`.
void setCableMute(CObject* cable, ToStore<bool> muted);
/// For a new one that stands beside another, or in its place: muted as that is.
void muteAs(CObject* made, const CObject* other);
/// Records a new one like that as added to a list.
void addTwin(CUndo* undo, CObject* made, CList* list, const CObject* other);

/// Makes a cable into `to`, not linked yet and owned by the caller, who links it with
/// `CUndo::asAdd` to `&to->audioCables` (or `add` while nothing runs). A null `toCh` means the
/// first input. Null when an end is missing.
CAudioCable* createAudioCable(CComp* to, COutputChannel* from, CInputChannel* toCh);
CMIDICable* createMIDICable(CComp* to, CMIDIQ* from, CMIDIQ* toPort);
/// The cable with these ends, null when there is none.
CAudioCable* getAudioCable(CComp* to, COutputChannel* from, CInputChannel* toCh);
CMIDICable* getMIDICable(CComp* to, CMIDIQ* from, CMIDIQ* toPort);

/// Whether a cable leads to `to` from a port or channel, of which null feeds nothing.
bool fedBy(const CComp* to, const CMIDIQ* from);
bool fedBy(const CComp* to, const COutputChannel* from);

/// Collects every cable below `tree` (for the host also in its sends) that touches a port or
/// channel of `c`, and records each as removed when `undo` is given. Lists may be null.
void listCables(CList* midi, CList* audio, CComp* tree, CComp* c, CUndo* undo);
/// Every cable below `tree` (for the host also in its sends) that leaves a channel or a port, of
/// which null has none.
std::vector<CAudioCable*> cablesFrom(CComp* tree, const COutputChannel* channel);
std::vector<CMIDICable*> cablesFrom(CComp* tree, const CMIDIQ* port);

/// Frees every cable below `tree` with an end at what goes: a component, port or channel. Interface
/// thread, with the graph.
void dropCables(CComp* tree, const ForgetSet& gone);

/// How files name a component: its index in `comps`, else in `sends`, else -1; and which of them.
int compToInt(CQV* host, CComp* c);
int listToInt(CQV* host, CComp* c);    ///< 0 `comps`, 2 `sends`, -1 neither
CList* intToList(CQV* host, int list); ///< 1 also means `comps`; null for other numbers
