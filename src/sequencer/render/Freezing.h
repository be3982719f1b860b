#pragma once

#include "sequencer/render/RenderExport.h"

class CQV;

/// Freezing renders tracks to files that play in their place; bouncing renders to a new track. Both
/// are one step of the history each, and leave nothing behind when they are cancelled or fail. All
/// on the interface thread, with the graph taken for the time of the render; `ui` may be null.

/// Freezes the selected tracks with parts of the current program, mutes and solos aside, and
/// unfreezes those that are frozen. The file of a channel holds its sound before fader and pan, as
/// 16-bit stereo at the running rate; a channel that stays silent gets none, nor one that plays a
/// file already.
///
/// Says "Can't freeze while song is playing", "Project must be saved before you can freeze track",
/// or what could not be written.
RenderResult freezeTracks(CSeq* seq, RenderUi* ui);

// The range that was chosen for the latest bounce, "bounce-selection" in section "render" of the
// settings; selected parts at first.
int readBounceRange(const CQV* host);
void writeBounceRange(const CQV* host, int rangeMode);

/// Renders a range of the song to a file of the project and puts that on a new audio track, where
/// the range begins. `rangeMode` is RenderRange.
///
/// Says "Cant render while song is playing", "Nothing to render", or what could not be written.
RenderResult bounceToNewTrack(CSeq* seq, int rangeMode, RenderUi* ui);
