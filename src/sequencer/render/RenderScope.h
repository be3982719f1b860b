#pragma once

#include "base/CStr.h"

#include <utility>
#include <vector>

class CComp;
class COutputChannel;
class CPart;
class CRender;
class CSample;
class CSeq;
class CSongTrack;
class CTrack;
struct RenderSpan;

/// The channels that a track is heard through, before anything is mixed to it: its own, or those of
/// the instruments that its port feeds. Interface thread.
std::vector<std::pair<CComp*, COutputChannel*>> channelsOf(CTrack* track);

/// A channel that a multi-track export captures, and the stem of its file's name.
struct TrackOutput {
    COutputChannel* channel;
    CStr name;
};

/// Those of the selected tracks with parts, then those of the send buses, numbered from 01 on.
std::vector<TrackOutput> trackOutputs(CSeq* seq);

/// Why a range is refused before it is rendered to a file as empty as this one: an empty text
/// unless no file of its format may be so long. Interface thread.
CStr whyTooLong(const CRender& render, CSeq* seq, const RenderSpan& span, const CSample& file);

/// As long as it stands only the selected parts of the current program play, whatever is muted or
/// soloed. Afterwards mutes and solos are as before, and no part is selected. Interface thread.
class SelectedOnly {
public:
    SelectedOnly(CSeq* sequencer, bool active); ///< without `active` it does nothing
    ~SelectedOnly();
    SelectedOnly(const SelectedOnly&) = delete;
    SelectedOnly& operator=(const SelectedOnly&) = delete;

private:
    std::vector<std::pair<CSongTrack*, unsigned>> trackFlags;
    std::vector<std::pair<CPart*, bool>> partMutes;
};
