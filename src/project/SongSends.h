#pragma once

#include <vector>

class COutputChannel;
class CQV;
class CSampler;
class CUndo;

/// The send buses that the instruments of an imported song share: one reverb and one chorus for
/// all. A bus that the host has already, by its name, is used again; what is new comes with the
/// step, or without one at once. Interface thread.
class SongSends {
public:
    SongSends(CQV* root, CUndo* step) : host(root), undo(step) {}

    /// As much of an instrument shall go there, 0 to 1; buses are made for what is above 0.
    void send(CSampler* instrument, float reverb, float chorus);
    /// Sets the sends. Only now that the step has been carried out: a bus that comes shifts those
    /// of all that comes with it.
    void settle() const;

private:
    CQV* host;
    CUndo* undo;
    struct Send {
        COutputChannel* channel;
        int bus;
        float level;
    };
    std::vector<Send> wanted;
    int reverbBus = -1, chorusBus = -1; ///< places among the sends, -1 not asked for yet

    void find(int& known, const char* name, int effect);
};
