#pragma once

#include "arrange/DropPlan.h"

#include <vector>

class CPopup;
class Workspace;
class CQV;
class CSeq;
class CSongTrack;

/// How the user brings files into the song: by the menu, after a question for the file, and by
/// dropping them. Nothing is brought in while a take is recorded. Without a song its actions are
/// not ready. Interface thread.
class SongImports {
public:
    /// Binds its actions; outlives the table's use.
    explicit SongImports(Workspace& workspace);

    /// Takes what is dropped, which comes at the next `serve`.
    void dropped(const DropPlan& plan);
    /// The same for files that are dropped anywhere else: they come to the position, on new tracks.
    void comeBeside(const std::vector<CStr>& paths, const char* verb = "Drop");
    void serve();

    /// Submenus of what lies among the presets: kits, arpeggios and effects for the first selected
    /// track, as far as it takes them.
    void fillForTrack(CPopup* popup);
    void fillNewTracks(CPopup* popup); ///< tracks, which come below it
    void saveTrackClicked(); ///< the same track as a preset, after a question for the file

private:
    /// Onto the selected audio track, where nothing stands from the position on, else onto a new
    /// one.
    void audioClicked();
    void midiClicked(); ///< from the start of the song on
    /// Clips come to the position; sounds to the selected track, if they are for its kind.
    void soundClicked();

    CSeq* seq() const; ///< null without a song
    void addPresets(CPopup* popup, const char* title, const char* endings, const char* verb);
    CStr ask(const char* title, const char* ext) const;
    /// `verb` is what the step is called, in front of the names.
    void bring(const std::vector<BringFile>& files, const char* verb);
    CSongTrack* selectedTrack() const;

    Workspace& workspace;
    CQV* qv;
    std::vector<BringFile> waiting; ///< its tracks may be gone by then
    const char* waitingVerb = "";   ///< what their step is called
};
