#include "sequencer/Templates.h"

#include "SongFixture.h"
#include "engine/CompTypes.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"

namespace {

/// Stands for the synthesizer, of which the templates need the ports alone.
class TestSynth : public CComp {
public:
    explicit TestSynth(CQV* root) : CComp(root) { id = "Synth", type = compSampler; }
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
};

/// A line per track: name, state, what it has, its lanes and its parts.
std::string lines(SongFixture& song) {
    std::string text;
    for (auto* t : each<CSongTrack>(song.prog()->tracks)) {
        CTrack* track = t->track;
        text += track->id.asChar();
        text += track->selected() ? " selected" : "";
        text += track->open() ? " open" : "";
        for (auto* lane : each<CSubTrack>(track->subTracks))
            text += std::string(" lane ") + lane->id.asChar();
        for (auto* part : each<CPart>(t->parts))
            text += std::string(part->selected() ? " selected " : " ") + part->getId().asChar() +
                    " part " + std::to_string(part->length);
        if (const CLayer* kit = track->drumLayer())
            for (auto* drum : each<CDrumSound>(kit->sounds))
                text += std::string(" ") + drum->getId().asChar() + std::to_string(drum->group);
        for (auto* channel : each<COutputChannel>(track->outputs))
            for (auto* insert : each<CComp>(channel->inserts))
                text += std::string(" insert ") + insert->id.asChar();
        text += '\n';
    }
    return text;
}

std::string times(int n, const std::string& first, const std::string& name,
                  const std::string& rest) {
    std::string text = name + "1" + first + "\n";
    for (int i = 2; i <= n; i++) text += name + std::to_string(i) + rest + "\n";
    return text;
}

} // namespace

TEST(Templates, HoldWhatTheyAreNamedFor) {
    enterCompType(compSampler, [](CQV* root) -> CComp* { return new TestSynth(root); });
    const std::string lane = std::string(" lane ") + COutputChannel::paramName(0).asChar();
    const std::string kit = " kick0 snare0 clap0 hat-close1 hat-open1";
    struct Case {
        void (*create)(CSeq*);
        std::string tracks;
        int midiIns, audioIns, audioOuts, synths, option;
    };
    const Case cases[] = {
        {createEmptyProject, "", 0, 0, 0, 0, 0},
        {createDefaultProject, "noname selected open lane Velocity MIDI part 3840\n", 1, 0, 1, 1,
         1},
        {createSimpleProject,
         "Instrument 1 selected open lane Velocity MIDI part 3840\nAudio 1" + lane + "\n", 1, 1, 1,
         0, 0},
        {createMIDISequencerProject,
         times(8, " selected open lane Velocity MIDI part 3840", "Instrument ", " lane Velocity"),
         8, 0, 0, 0, 0},
        {createPortaStudioProject, times(8, " selected" + lane, "Audio ", lane), 0, 8, 8, 0, 0},
        {createDrumAndBassProject,
         "Drum selected Drum part 3840" + kit + "\nInstrument lane Velocity MIDI part 3840\n", 2, 0,
         2, 1, 0},
        {createGuitaristProject,
         "Drum Drum part 3840" + kit + "\nGuitar" + lane + " insert Guitar Amp insert Reverb\n", 1,
         1, 2, 0, 1},
    };
    for (const Case& c : cases) {
        SongFixture song;
        c.create(song.seq);
        const int which = int(&c - cases);
        EXPECT_EQ(lines(song), c.tracks) << which;
        EXPECT_EQ(song.seq->midiCables.getCount(), c.midiIns) << which;
        EXPECT_EQ(song.seq->audioCables.getCount(), c.audioIns) << which;
        EXPECT_EQ(song.host.getAudioOut()->audioCables.getCount(), c.audioOuts) << which;
        EXPECT_EQ(song.seq->options.bytes[1], c.option) << which;
        EXPECT_EQ(song.host.undoList.getCount(), 0) << "not undoable";
        int synths = 0;
        for (auto* comp : each<CComp>(song.host.comps))
            if (comp->type == compSampler) {
                synths++;
                EXPECT_EQ(comp->midiCables.getCount(), 1);
            }
        EXPECT_EQ(synths, c.synths) << which;
    }
}
