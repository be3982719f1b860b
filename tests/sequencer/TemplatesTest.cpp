#include "sequencer/song/Templates.h"

#include "SongFixture.h"
#include "engine/CompTypes.h"

namespace {

/// The tracks by name, the first letters of what they have, and what is selected in capitals:
/// parts, lanes, drums, inserts.
std::string tracksOf(SongFixture& song) {
    std::string text;
    for (auto* t : song.prog()->tracks) {
        CTrack* track = t->track;
        text += std::string(track->id.asChar()) + (track->selected() ? "! " : " ");
        for (auto* part : t->parts) text += part->selected() ? 'P' : 'p';
        text.append(size_t(track->subTracks.getCount()), 'l');
        for (int i = 0; track->drumSound(i); i++) text += 'd';
        for (auto* channel : track->outputs) text.append(size_t(channel->inserts.getCount()), 'i');
        text += "; ";
    }
    return text;
}

/// Eight tracks, of which the first has more.
std::string eight(const std::string& name, const std::string& first, const std::string& rest) {
    std::string text = name + "1" + first;
    for (int i = 2; i <= 8; i++) text += name + std::to_string(i) + rest;
    return text;
}

} // namespace

TEST(Templates, HoldWhatTheyAreNamedFor) {
    enterCompType(compSampler, [](CQV* root) -> CComp* {
        auto* synth = new TestInstrument(root); // the templates need the ports alone
        synth->type = compSampler;
        return synth;
    });
    struct Case {
        void (*create)(CSeq*);
        std::string tracks;
        int midiIns, audioIns, audioOuts, synths, option, outside = 0;
    };
    const Case cases[] = {
        {createEmptyProject, "", 0, 0, 0, 0, 0},
        {createDefaultProject, "Instrument 1! pl; ", 1, 0, 1, 1, 1},
        {createSimpleProject, "Instrument 1! pl; Audio 1 l; ", 1, 1, 1, 0, 0},
        {createMIDISequencerProject, eight("Instrument ", "! pl; ", " l; "), 8, 0, 0, 0, 0, 8},
        {createPortaStudioProject, eight("Audio ", "! l; ", " l; "), 0, 8, 8, 0, 0},
        {createDrumAndBassProject, "Drum Pddddd; Instrument pl; ", 2, 0, 2, 1, 0},
        {createGuitaristProject, "Drum pddddd; Guitar lii; ", 1, 1, 2, 0, 1}};
    for (const Case& c : cases) {
        SongFixture song;
        c.create(song.seq);
        EXPECT_EQ(tracksOf(song), c.tracks);
        EXPECT_EQ(song.seq->midiCables.getCount(), c.midiIns) << c.tracks;
        EXPECT_EQ(song.seq->audioCables.getCount(), c.audioIns) << c.tracks;
        EXPECT_EQ(song.host.getAudioOut()->audioCables.getCount(), c.audioOuts) << c.tracks;
        EXPECT_EQ(song.seq->options.bytes[1], c.option) << c.tracks;
        const CComp* synth = song.host.firstOfType(compSampler);
        EXPECT_EQ(synth ? synth->midiCables.getCount() : 0, c.synths) << c.tracks;
        const CComp* midiOut = song.host.getMIDIOut();
        for (const auto* cable : midiOut->midiCables)
            EXPECT_TRUE(song.seq->outPorts.contains(cable->fromPort));
        EXPECT_EQ(midiOut->midiCables.getCount(), c.outside) << c.tracks;
        for (int i = 0; i < c.outside; i++) EXPECT_EQ(song.seq->tracks.items(i)->channel, i);

        song.seq->setLoop(1);
        song.host.setLoop(1);
        auto* far = new CMIDIPart;
        far->pos = 9 * barTicks;
        if (c.midiIns > 0) song.prog()->tracks.last()->parts.add(far);
        frameSong(song.seq);
        EXPECT_EQ(song.seq->getLoop() + song.host.getLoop(), 0);
        int from = -1, to = -1;
        song.seq->getLoopSection(from, to);
        EXPECT_EQ(from, 0);
        EXPECT_EQ(to, (c.midiIns > 0 ? 10 : 1) * barTicks) << c.tracks;
        if (c.midiIns == 0) delete far;
    }
}
