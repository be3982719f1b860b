#pragma once

#include <memory>
#include <vector>

class CComp;
class CObject;
class CPopup;
class CSeq;
class CTrack;
class Workspace;

/// The entries of a menu that lead tracks somewhere: to an instrument, or an output. Outlives the
/// menus that it has filled. Interface thread.
class TargetMenu {
public:
    /// "Instrument", "Output", or empty for a track that leads nowhere.
    static const char* nameFor(const CTrack* track);
    /// What the first of the tracks may lead to, and "None"; where it leads is checked. A choice
    /// takes all of them there that can go, in one step. Instrument tracks can be given a
    /// synthesizer of their own, or a plug-in, and where the first one leads can be opened.
    void fill(CPopup* popup, Workspace& workspace, CSeq* seq, const std::vector<CTrack*>& tracks);

private:
    void chosen(CObject* sender);
    void addClicked(CObject*);
    void openClicked(CObject*);
    void play(std::unique_ptr<CComp> made);

    CSeq* song = nullptr; ///< not owned, nor are the next; only used while they are in it
    std::vector<CTrack*> led;
    std::vector<CComp*> targets;
};
