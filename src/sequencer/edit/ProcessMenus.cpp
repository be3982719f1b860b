#include "sequencer/edit/ProcessMenus.h"

#include "audiofiles/CAudioProcessor.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/song/CSeq.h"

namespace {

struct Selection {
    const CPartSummary& parts;
    bool editorKnown;
    bool range() const { return parts.selStart != parts.selEnd; }
    bool single() const { return parts.multiclip == 0; }
};

struct Rule {
    ProcessEntry entry;
    bool (*shown)(const Selection&);
};

bool plain(const Selection& s) {
    return s.single();
}

bool withRange(const Selection& s) {
    return s.single() && s.range();
}

bool withoutRange(const Selection& s) {
    return s.single() && !s.range();
}

bool toMono(const Selection& s) {
    return withRange(s) || (s.single() && s.parts.stereoEvents > 0 && s.parts.monoEvents == 0);
}

bool one(const Selection& s) {
    return s.single() && s.parts.selected == 1;
}

constexpr Rule audioRules[] = {
    {{"Flatten", processFlatten}, [](const Selection& s) { return !s.single(); }},
    {{"Normalize", processNormalize}, plain},
    {{"Delete", processDelete}, withRange},
    {{"Cut", processCut}, withRange},
    {{"Trim", processTrim}, withRange},
    {{"", entrySeparator}, withRange},
    {{"Convert to mono", processMono}, toMono},
    {{"Reverse", processReverse}, plain},
    {{"Fade In", processFadeIn}, plain},
    {{"Fade Out", processFadeOut}, plain},
    {{"Beatslice", processBeatslice}, withoutRange},
    {{"Autoslice", processAutoslice}, withoutRange},
    {{"Open with '", entryOpenWith}, [](const Selection& s) { return one(s) && s.editorKnown; }},
    {{"Open with...", entryOpenOther}, one},
    {{"Crossfade", entryCrossfade},
     [](const Selection& s) { return s.single() && s.parts.audio == 2; }},
};

bool doesSomethingToHits(int mode) {
    return mode == midiReverse || mode == midiHalfTempo || mode == midiDoubleTempo ||
           mode == midiRandom;
}

} // namespace

std::vector<ProcessEntry> audioProcessMenu(const CPartSummary& selection, bool editorKnown) {
    std::vector<ProcessEntry> entries;
    if (selection.audio == 0) return entries;
    for (const Rule& rule : audioRules)
        if (rule.shown({selection, editorKnown})) entries.push_back(rule.entry);
    return entries;
}

std::vector<ProcessEntry> midiProcessMenu(const CPartSummary& selection) {
    std::vector<ProcessEntry> entries;
    if (selection.audio > 0 || selection.midi == 0) return entries;
    for (int mode = 0; mode < midiProcessCount; mode++)
        entries.push_back({midiProcessText(mode), mode});
    return entries;
}

std::vector<ProcessEntry> drumProcessMenu(const CPartSummary& selection) {
    std::vector<ProcessEntry> entries;
    if (selection.audio > 0 || selection.midi > 0 || selection.drum == 0) return entries;
    for (int mode = 0; mode < midiProcessCount; mode++)
        if (doesSomethingToHits(mode)) entries.push_back({midiProcessText(mode), mode});
    return entries;
}

CPart* onlyAudioPart(CSeq* seq) {
    CPartSummary summary;
    seq->getPartSummary(summary);
    return summary.audio == 1 ? seq->getFirstSelectedPart(partAudio, nullptr) : nullptr;
}
