#pragma once

class CQV;
class CSeq;
class Workspace;

/// The actions that render the song: export, freeze, bounce, MIDI. Without a song they are not
/// ready, nor inside another render, whose events are handled while it runs. Interface thread.
class RenderCommands {
public:
    /// Binds them; outlives the table's use.
    explicit RenderCommands(Workspace& workspace);

private:
    CSeq* seq() const; ///< null without a song
    bool frozen() const;
    void clearMeters();
    void exportSong();
    void exportMidi();
    void freeze();
    void bounce();

    Workspace& workspace;
    CQV* qv;
};
