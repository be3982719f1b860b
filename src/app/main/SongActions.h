#pragma once

class CAction;
class CMarkerPart;
class CQV;
class CSeq;
class CSeqProg;
class CSongTrack;
struct StoredValue;

/// What the actions on the song and its parts do that need no view of them. Without a song they do
/// nothing. Interface thread.
class SongActions {
public:
    explicit SongActions(CQV* host) : qv(host) {}

    bool knows(const CAction* action) const;
    bool run(const CAction* action); ///< false for one that it does not know
    /// Whether an action that it knows has something to act on at present; menus grey out the
    /// others.
    bool ready(const CAction* action) const;
    /// Whether it switches something that is on at present; menus tick it.
    bool isOn(const CAction* action) const;
    /// A new track of a kind (TrackKind) at the end of the song, with what makes it heard, as a
    /// step of the history. It alone is selected then.
    void addTrack(int kind);

private:
    struct Command {
        const char* name;
        void (SongActions::*run)();
    };
    static const Command commands[];
    static const Command* find(const CAction* action);
    /// An edit of the song's parts: refused, as undo is, while a take is recorded.
    struct PartCommand {
        const char* name;
        void (*run)(CSeq* seq);
        bool (*ready)(CSeq* seq);
    };
    static const PartCommand partCommands[];
    static const PartCommand* findPart(const CAction* action);

    CSeq* seq() const; ///< null without a song
    CSeqProg* prog() const;

    void leftLocator();
    void rightLocator();
    void nextBeat();
    void priorBeat();
    void priorProg();
    void nextProg();
    void playSelection();
    void loopSelection();
    void mute();
    void solo();
    void addInstrument();
    void openComp();
    void addMarker();
    void deleteMarker();
    void priorMarker();
    void nextMarker();
    void addTimesig();
    void snap();
    void snapPrior();
    void snapNext();

    void toggle(StoredValue (*valueOf)(CSongTrack*));
    bool recording() const;
    bool locateSelection();
    void stepProg(int by);
    void stepMarker(int by);
    int beatTicks(int tick) const;

    CQV* qv;
};
