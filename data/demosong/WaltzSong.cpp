#include "data/demosong/WaltzSong.h"

#include "data/demosong/TextSong.h"
#include "data/presets/TrackPresets.h"
#include "engine/CQV.h"
#include "instruments/CSampler.h"
#include "project/SongSends.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <string>

namespace {

constexpr int barSteps = 12; ///< of 3/4
constexpr float bpm = 138.0f, slowBpm = 84.0f;

/// Sections, counted in bars.
enum Section : int { intro = 0, first = 4, again = 12, bridge = 20, last = 28, tag = 36, end = 40 };

// The form: Gm9 C13 Fmaj9 Bbmaj7 Em7b5 A7b9 Dm9 D7, and a bridge from Bb down to A7.
constexpr const char* bassIntro = "D2:12! | D2:8 A1:4 | G1:12! | A1:8 D2:4";
constexpr const char* bassForm =
    "G2:4! Bb2:4 D3:4 | C3:4! G2:4 E2:4 | F2:4! A2:4 C3:4 | Bb2:4! F2:4 D2:4 | "
    "E2:4! G2:4 Bb2:4 | A2:4! C#3:4 E3:4 | D3:4! A2:4 F2:4 | D2:4! F#2:4 A2:4";
constexpr const char* bassBridge =
    "Bb1:8! F2:4 | A1:8! E2:4 | G1:8! D2:4 | F1:8! C2:4 | "
    "Eb2:8! Bb1:4 | D2:8! A1:4 | G1:4! Bb1:4 D2:4 | A1:4! C#2:4 E2:4";
constexpr const char* bassTag = "D2:4! A2:4 F2:4 | G2:4! D2:4 G1:4 | D2:12! | D2:12?";

constexpr const char* pianoIntro = "D3+A3+C4+E4+F4:10? -:2 | -:4 F4+A4+C5:2? -:2 F4+A4+C5:2? -:2 | "
                                   "G3+Bb3+D4+F4+A4:10? -:2 | G3+C#4+F4+Bb4:10 -:2";
constexpr const char* pianoForm =
    "-:4 F3+Bb3+D4+A4:3 -:1 F3+Bb3+D4+A4:2? -:2 | -:4 E3+Bb3+D4+A4:5 -:3 | "
    "-:4 E3+A3+C4+G4:3 -:1 E3+A3+C4+G4:2? -:2 | -:2 D3+A3+C4+F4:6 -:4 | "
    "-:4 D3+G3+Bb3+E4:3 -:1 D3+G3+Bb3+E4:2? -:2 | -:4 C#3+G3+Bb3+E4:5 -:3 | "
    "-:4 F3+A3+C4+E4:3 -:1 F3+A3+C4+E4:2? -:2 | C3+F#3+A3+D4:4 -:2 C3+F#3+Bb3+D4:4 -:2";
constexpr const char* pianoBridge =
    "D4+F4+A4:12? | C4+E4+G4:12? | Bb3+D4+F4:12? | A3+C4+E4:12? | "
    "G3+Bb3+D4:12? | F#3+C4+Eb4:12? | F3+Bb3+D4:6 -:2 F3+Bb3+D4:4 | G3+C#4+E4:6 -:2 G3+Bb3+C#4:4";
constexpr const char* pianoTag =
    "-:4 F3+A3+C4+E4:3 -:1 F3+A3+C4+E4:2? -:2 | -:4 F3+Bb3+D4+A4:5 -:3 | "
    "F3+A3+C4+E4+A4:12 | F3+A3+C4+E4+A4+C5:12?";

constexpr const char* tune =
    "D5:4! Bb4:2 A4:2? G4:4 | E5:8! D5:2 C5:2? | A4:4 C5:4 E5:4! | F5:6! E5:2? D5:4 | "
    "Bb4:4 D5:4 G5:4! | F5:2 E5:2 C#5:4 Bb4:4 | A4:8 F5:2 E5:2 | D5:6 -:2 F#4:2? A4:2";
constexpr const char* tuneAgain =
    "D5:4! F5:2 D5:2? Bb4:4 | A5:8! G5:2 E5:2? | F5:2 E5:2 C5:4 A4:4 | D5:6! F5:2? A5:4! | "
    "G5:4 Bb4:2 D5:2 G5:4 | A5:2! G5:2 E5:2 C#5:2 Bb4:4 | A4:4 D5:2 E5:2 F5:4! | D5:10 -:2";
constexpr const char* bridgeTune =
    "D4:8 F4:4 | C4:8 E4:4 | Bb3:6 D4:2 G4:4! | A4:8 G4:2? F4:2? | "
    "G4:6! F4:2 D4:4 | F#4:8 Eb4:2? C4:2? | Bb3:4 D4:4 F4:4 | E4:6 C#4:2 A3:4";
constexpr const char* bridgeStrings =
    "Bb2+F3+D4+A4:12? | A2+E3+C4+G4:12? | G2+D3+Bb3+F4:12? | F2+C3+A3+E4:12? | "
    "Eb2+Bb2+G3+D4:12? | D2+A2+F#3+C4:12? | G2+D3+Bb3+F4:12 | A2+E3+C#4+G4:12";
constexpr const char* lastStrings =
    "G3+D4:12? | Bb3+E4:12? | A3+E4:12? | A3+D4:12? | G3+D4:12? | G3+C#4:12? | A3+F4:12 | "
    "F#3+C4:12";
constexpr const char* tagTune = "A4:6! F5:2 E5:4 | D5:4 Bb4:4 A4:4? | F4:10 E4:2? | D4:12?";
constexpr const char* tagStrings = "A3+F4:12? | Bb3+D4:12? | A3+C4+F4:12? | A3+D4+F4:12?";

// By the sounds of the brushes: ride, stroke, foot hat, kick, swirl.
constexpr presets::DrumRow beat[] = {{5, "X...x..xx..xX...x...x..x"},
                                     {1, "........o.......x......o"},
                                     {3, "....x.......x..........."},
                                     {0, "x...........x.......o..."},
                                     {2, "o...........o..........."}};
constexpr presets::DrumRow bridgeBeat[] = {{5, "X...x...x...X...x...x..x"},
                                           {2, "x...........x..........."},
                                           {0, "x...........x..........."}};

/// Puts the parts of the song on its tracks.
class Waltz {
public:
    explicit Waltz(CQV* host) : song(host) {}

    CSeq* build() {
        song.signature(0, 3, 4);
        brushes();
        play("Bass", "Up-right bass", 1.0f, 0.0f, 0.06f,
             {{intro, bassIntro},
              {first, bassForm},
              {again, bassForm},
              {bridge, bassBridge},
              {last, bassForm},
              {tag, bassTag}});
        play("Piano", "Old piano", 0.9f, -0.2f, 0.2f,
             {{intro, pianoIntro},
              {first, pianoForm},
              {again, pianoForm},
              {bridge, pianoBridge},
              {last, pianoForm},
              {tag, pianoTag}});
        play("Flute", "Flute", 0.95f, 0.2f, 0.3f,
             {{first, tune}, {again, tuneAgain}, {last, tune}, {tag, tagTune}});
        play("Violin", "Violina", 0.9f, 0.1f, 0.3f, {{bridge, bridgeTune}});
        play("Strings", "Strings", 0.72f, 0.0f, 0.4f,
             {{bridge, bridgeStrings}, {last, lastStrings}, {tag, tagStrings}});
        sends.settle();
        presets::addRack(song.host->getAudioOut()->output(), "Glue");
        presets::setLevel(song.host->getAudioOut()->output(), 0.97f, 0.0f);
        sections();
        return song.finish(end * barSteps, bpm);
    }

private:
    struct Entry {
        int bar;
        const char* line;
    };

    void play(const char* name, const char* program, float fader, float pan, float hall,
              std::initializer_list<Entry> parts) {
        CTrack* track = song.track(trackMIDI, name);
        CSampler* player = presets::giveProgram(track, program);
        setStrip(player, fader, pan);
        sends.send(player, hall, 0.0f);
        for (const Entry& part : parts) song.line(track, part.bar * barSteps, part.line);
    }

    void brushes() {
        CTrack* track = song.kitTrack("Brushes", "Brushes");
        presets::addRack(track->output(), "Small room");
        presets::setLevel(track->output(), 0.62f, 0.0f);
        const auto section = [&](int from, int to, std::span<const presets::DrumRow> rows) {
            for (int bar = from; bar < to; bar += 2) song.beat(track, bar * barSteps, rows);
        };
        section(intro + 2, bridge, beat);
        section(bridge, last, bridgeBeat);
        section(last, end - 2, beat);
    }

    /// From the last bars on the tempo falls, evenly.
    void sections() {
        song.tempo(0, bpm, false);
        song.tempo((end - 3) * barSteps, bpm, true);
        song.tempo(end * barSteps, slowBpm, false);
        const struct {
            int from, to;
            const char* name;
        } all[] = {{intro, first, "Intro"},  {first, again, "Tune"}, {again, bridge, "Again"},
                   {bridge, last, "Bridge"}, {last, tag, "Tune"},    {tag, end, "End"}};
        for (const auto& s : all) song.marker(s.from * barSteps, s.to * barSteps, s.name);
    }

    TextSong song;
    SongSends sends{song.host, nullptr};
};

} // namespace

CSeq* buildWaltzSong(CQV* host) {
    return Waltz(host).build();
}
