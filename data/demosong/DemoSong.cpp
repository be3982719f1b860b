#include "data/demosong/DemoSong.h"

#include "data/demosong/DemoSounds.h"
#include "data/demosong/Score.h"
#include "data/demosong/SongBuilder.h"
#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"

#include <iterator>
#include <span>

namespace {

using Chords = std::span<const ScoreChord>;
using Line = std::span<const ScoreNote>;

/// Parts that make up the song, track by track; each function fills the parts of one section.
class DemoSong {
public:
    explicit DemoSong(CQV* host) : song(host), sounds(song) {}
    CSeq* build();

private:
    void drums();
    void bass();
    void pads();
    void pluck();
    void lead();
    void guitar();
    void clips();
    void automation();
    void points();

    void padChord(PartBuilder& part, int bar, const ScoreChord& chord, int transpose = 0);
    void bassBar(PartBuilder& part, int bar, std::span<const BassStep> steps,
                 const ScoreChord& chord);
    void melody(PartBuilder& part, Line line, int transpose = 0);
    void drumBar(PartBuilder& kit, PartBuilder& rest, int bar, std::span<const DrumLine> lines);

    SongBuilder song;
    DemoSounds sounds;
};

const ScoreChord& chordAt(Chords chords, int bar) {
    return chords[size_t(bar) % chords.size()];
}

void DemoSong::padChord(PartBuilder& part, int bar, const ScoreChord& chord, int transpose) {
    for (int voice : chord.voices) part.note(bar, 0, stepsPerBar, voice + transpose, 76);
}

void DemoSong::bassBar(PartBuilder& part, int bar, std::span<const BassStep> steps,
                       const ScoreChord& chord) {
    for (const BassStep& s : steps)
        part.note(bar, s.step, s.length, chord.root + 12 * s.octave + s.above, s.velocity);
}

void DemoSong::melody(PartBuilder& part, Line line, int transpose) {
    for (const ScoreNote& n : line)
        part.note(n.bar, n.step, n.length, n.note + transpose, n.velocity);
}

void DemoSong::drumBar(PartBuilder& kit, PartBuilder& rest, int bar,
                       std::span<const DrumLine> lines) {
    for (const DrumLine& line : lines)
        for (int step = 0; step < kit.steps() - bar * stepsPerBar && step < stepsPerBar; step++) {
            const int velocity = stepVelocity(line.steps[step]), sound = kitSoundOf(line.key);
            if (velocity > 0 && sound >= 0) kit.hit(bar, step, sound, velocity);
            if (velocity > 0 && sound < 0) rest.note(bar, step, 1, line.key, velocity);
        }
}

void DemoSong::drums() {
    constexpr int phrase = 4;
    auto section = [this](int from, int to, std::span<const DrumLine> lines,
                          std::span<const DrumLine> turn, bool crash) {
        PartBuilder kit(song.part(sounds.kit, from, to)), rest(song.part(sounds.drums, from, to));
        for (int bar = 0; bar < to - from; bar++)
            drumBar(kit, rest, bar, bar % phrase == phrase - 1 ? turn : lines);
        if (crash) rest.note(0, 0, 4, keyCrash, 54);
    };
    section(barGroove, barGroove + phrase, drumHats, drumHats, false);
    section(barGroove + phrase, barVerse, drumVerse, drumVerseTurn, true);
    section(barVerse, barTheme, drumVerse, drumVerseTurn, true);
    section(barTheme, barBreak, drumVerse, drumVerseTurn, true);
    section(barChorus, barTurn, drumChorus, drumChorusTurn, true);
    section(barChorus2, barOutro, drumChorus, drumChorusTurn, true);

    PartBuilder roll(song.part(sounds.kit, barBuild, barChorus));
    PartBuilder end(song.part(sounds.drums, barOutro, barOutro + phrase));
    PartBuilder endKit(song.part(sounds.kit, barOutro, barOutro + phrase));
    for (int bar = 0; bar < int(std::size(drumBuild)); bar++)
        drumBar(roll, end, bar, std::span(&drumBuild[bar], 1));
    for (int bar = 0; bar < phrase; bar++) drumBar(endKit, end, bar, drumHats);
    end.note(0, 0, 4, keyCrash, 54);

    PartBuilder breath(song.part(sounds.kit, barTurn, barChorus2));
    PartBuilder breathRest(song.part(sounds.drums, barTurn, barChorus2));
    drumBar(breath, breathRest, 0, drumBreath);
}

void DemoSong::bass() {
    using Steps = std::span<const BassStep>;
    auto section = [this](int from, int to, Steps steps, Steps turn, Chords chords) {
        constexpr int phrase = 4;
        PartBuilder part(song.part(sounds.bass, from, to));
        for (int bar = 0; bar < to - from; bar++)
            bassBar(part, bar, bar % phrase == phrase - 1 ? turn : steps, chordAt(chords, bar));
    };
    section(barGroove, barVerse, bassVerse, bassVerse, verseChords);
    section(barVerse, barTheme, bassVerse, bassVerseTurn, verseChords);
    section(barTheme, barBreak, bassVerse, bassVerseTurn, verseChords);
    section(barChorus, barTurn, bassChorus, bassChorusTurn, chorusChords);
    section(barChorus2, barOutro, bassChorus, bassChorusTurn, chorusChords);
    PartBuilder end(song.part(sounds.bass, barOutro, barEnd));
    for (int bar = 0; bar < 4; bar++) end.note(bar, 0, 14, chordAt(verseChords, bar).root, 92);
    end.note(4, 0, 2 * stepsPerBar, verseChords[0].root, 88);
}

void DemoSong::pads() {
    auto section = [this](int from, int to, Chords chords) {
        PartBuilder part(song.part(sounds.pad, from, to));
        for (int bar = 0; bar < to - from; bar++) padChord(part, bar, chordAt(chords, bar));
    };
    section(barIntro, barGroove, verseChords);
    section(barVerse, barTheme, verseChords);
    section(barTheme, barBreak, verseChords);
    section(barBreak, barChorus, verseChords);
    section(barChorus, barTurn, chorusChords);
    section(barChorus2, barOutro, chorusChords);
    PartBuilder end(song.part(sounds.pad, barOutro, barEnd));
    for (int bar = 0; bar < 4; bar++) padChord(end, bar, chordAt(verseChords, bar));
    for (int voice : verseChords[0].voices) end.note(4, 0, 2 * stepsPerBar - 4, voice, 72);
}

/// Chords, which the arpeggiator of the track takes apart.
void DemoSong::pluck() {
    auto section = [this](int from, int to, Chords chords, int transpose) {
        PartBuilder part(song.part(sounds.pluck, from, to));
        for (int bar = 0; bar < to - from; bar++)
            padChord(part, bar, chordAt(chords, bar), transpose);
    };
    section(barIntro + 2, barGroove, std::span(verseChords).subspan(2), 12);
    section(barGroove, barVerse, verseChords, 12);
    section(barVerse, barTheme, verseChords, 12);
    section(barBreak, barChorus, verseChords, 12);
    section(barChorus2, barOutro, chorusChords, 12);
    section(barOutro, barOutro + 4, verseChords, 12);
}

void DemoSong::lead() {
    PartBuilder first(song.part(sounds.lead, barTheme, barBreak));
    melody(first, themeA);
    PartBuilder chorus(song.part(sounds.lead, barChorus, barTurn));
    melody(chorus, themeB);
    chorus.close();
    song.ghost(sounds.lead, chorus.getPart(), barChorus2);
    PartBuilder harmony(song.part(sounds.harmony, barChorus2, barOutro));
    melody(harmony, harmonyB);
    PartBuilder echo(song.part(sounds.harmony, barBreak, barBuild + 4));
    melody(echo, std::span(themeA).first(15), -12);
}

/// Root and fifth, damped between the strokes.
void DemoSong::guitar() {
    constexpr int fifth = 7;
    PartBuilder part(song.part(sounds.guitar, barChorus, barTurn));
    for (int bar = 0; bar < barTurn - barChorus; bar++)
        for (const BassStep& s : guitarChorus)
            for (const int above : {0, fifth})
                part.note(bar, s.step, s.length,
                          chordAt(chorusChords, bar).root + 12 * s.octave + above, s.velocity);
    part.close();
    song.ghost(sounds.guitar, part.getPart(), barChorus2);
}

/// Sounds from disk, as it were: two loops of other tempos.
void DemoSong::clips() {
    constexpr int beatBars = 2, voiceBars = 4;
    CPart* beat = song.clip(sounds.beat, sounds.beatLoop, barTheme, barTheme + beatBars);
    for (int bar = barTheme + beatBars; bar < barBreak; bar += beatBars)
        song.ghost(sounds.beat, beat, bar);
    for (int bar = 0; bar < barTurn - barChorus; bar += beatBars) {
        song.ghost(sounds.beat, beat, barChorus + bar);
        song.ghost(sounds.beat, beat, barChorus2 + bar);
    }
    CPart* voices = song.clip(sounds.voices, sounds.voiceLoop, barGroove + voiceBars, barVerse);
    song.ghost(sounds.voices, voices, barBreak);
    song.ghost(sounds.voices, voices, barBuild);
}

void DemoSong::automation() {
    constexpr float ease = 0.35f;
    sounds.padCutoff.curve(barIntro, barGroove, {{0, 0, 0.5f}, {4, 0, 0.8f, ease}});
    sounds.padCutoff.curve(barBreak, barChorus, {{0, 0, 0.6f}, {4, 0, 0.6f}, {8, 0, 0.95f, ease}});
    sounds.padCutoff.curve(barChorus, barTurn, {{0, 0, 0.88f}});
    sounds.padCutoff.curve(barOutro, barEnd, {{0, 0, 0.85f}, {6, 0, 0.5f, -ease}});
    sounds.padVolume.curve(barIntro, barGroove, {{0, 0, 0.35f}, {3, 0, 0.8f, ease}});
    sounds.padVolume.curve(barOutro, barEnd, {{0, 0, 0.8f}, {3, 0, 0.78f}, {6, 0, 0.0f, -ease}});
    sounds.pluckPan.curve(
        barGroove, barVerse,
        {{0, 0, 0.5f}, {2, 0, 0.32f}, {4, 0, 0.68f}, {6, 0, 0.32f}, {8, 0, 0.5f}});
    sounds.pluckCutoff.curve(barBreak, barChorus, {{0, 0, 0.5f}, {8, 0, 1.0f, ease}});
    sounds.pluckCutoff.curve(barChorus2, barOutro, {{0, 0, 0.9f}});
}

void DemoSong::points() {
    song.tempo(barIntro, demoBpm);
    song.tempo(barEnd - 2, demoBpm * 0.94f);
    song.tempo(barEnd - 1, demoBpm * 0.86f);
    song.signature(barIntro, 4, 4);
    song.signature(barTurn, 2, 4);
    song.signature(barChorus2, 4, 4);
    const struct {
        int from, to;
        const char* name;
    } sections[] = {
        {barIntro, barGroove, "Intro"},     {barGroove, barVerse, "Groove"},
        {barVerse, barTheme, "Verse"},      {barTheme, barBreak, "Theme"},
        {barBreak, barBuild, "Break"},      {barBuild, barChorus, "Build"},
        {barChorus, barTurn, "Chorus"},     {barTurn, barChorus2, "Breath"},
        {barChorus2, barOutro, "Chorus 2"}, {barOutro, barEnd, "Outro"},
    };
    for (const auto& s : sections) song.marker(s.from, s.to, s.name);
}

CSeq* DemoSong::build() {
    drums();
    bass();
    pads();
    pluck();
    lead();
    guitar();
    clips();
    automation();
    points();
    return song.finish(barEnd);
}

} // namespace

CSeq* buildDemoSong(CQV* host) {
    return DemoSong(host).build();
}
