#pragma once

class ArrangeState;
class CSeq;
class CTrack;
class HeadList;
struct StoredValue;

/// Binds the actions on the selected tracks. Interface thread; lives as long as the commands are
/// used.
class TrackCommands {
public:
    TrackCommands(ArrangeState& state, HeadList& heads);
    TrackCommands(const TrackCommands&) = delete;
    TrackCommands& operator=(const TrackCommands&) = delete;

private:
    bool anyTrack() const;
    void bindSwitches();
    void toggle(StoredValue (*valueOf)(CTrack*));
    bool all(StoredValue (*valueOf)(CTrack*)) const;
    void sumFolders();
    void fold();
    void showTakes();
    void showNotes();
    void step(int by);
    bool canStep(int by) const;

    ArrangeState& state;
    HeadList& heads;
};

/// "(Un)mute all tracks", "(Un)solo all tracks": all off where any is on, else all on. One step.
void toggleMutesOfAll(CSeq* seq);
void toggleSolosOfAll(CSeq* seq);
