#include "SoundFixture.h"

#include "base/CStream.h"
#include "base/TempFolder.h"
#include "instruments/CSF2.h"
#include "support/Rows.h"
#include "support/Told.h"

#include <algorithm>
#include <map>
#include <string>

namespace {

using Bytes = std::string;

Bytes little(int64_t value, int bytes) {
    Bytes out;
    for (int i = 0; i < bytes; i++) out += char(value >> (8 * i));
    return out;
}
Bytes chunk(const Bytes& id, const Bytes& body) {
    return id + little(int64_t(body.size()), 4) + body;
}
Bytes named(const Bytes& name) {
    return name + Bytes(20 - name.size(), '\0');
}
int ranged(int low, int high) {
    return low | high << 8;
}

struct Gen {
    int id, value;
};
using Gens = std::vector<Gen>;
constexpr int keys = 43, vels = 44, instrument = 41, sampleId = 53, modes = 54, rootKey = 58,
              coarse = 51, fine = 52;

/// A SoundFont in the making. Each preset and each instrument is a list of zones.
struct Font {
    struct Part {
        Bytes name;
        std::vector<Gens> zones;
        int number = 0, bank = 0;
    };
    struct Sample {
        Bytes name;
        int64_t start, end, loopStart, loopEnd, rate;
        int pitch = 60, type = 1;
    };
    std::vector<Part> presets, instruments;
    std::vector<Sample> samples;
    std::vector<short> frames;

    using Tables = std::map<Bytes, Bytes>;

    static void fill(Tables& t, std::vector<Part> parts, bool heads) {
        Bytes &head = t[heads ? "phdr" : "inst"], &bags = t[heads ? "pbag" : "ibag"];
        Bytes& gens = t[heads ? "pgen" : "igen"];
        parts.push_back({"end", {{{0, 0}}}});
        for (const Part& p : parts) {
            head += named(p.name) + (heads ? little(p.number, 2) + little(p.bank, 2) : "");
            head += little(int64_t(bags.size() / 4), 2) + Bytes(heads ? 12 : 0, '\0');
            for (const Gens& zone : p.zones) {
                bags += little(int64_t(gens.size() / 4), 4);
                for (const Gen& g : zone) gens += little(g.id, 2) + little(g.value, 2);
            }
        }
    }

    Bytes bytes() const {
        Tables t;
        fill(t, presets, true);
        fill(t, instruments, false);
        for (const Sample& s : samples) {
            t["shdr"] += named(s.name);
            for (int64_t v : {s.start, s.end, s.loopStart, s.loopEnd, s.rate})
                t["shdr"] += little(v, 4);
            t["shdr"] += little(s.pitch, 4) + little(s.type, 2);
        }
        t["shdr"] += Bytes(46, '\0');
        Bytes smpl, pdta = "pdta";
        for (short v : frames) smpl += little(v, 2);
        for (auto id : {"phdr", "pbag", "pmod", "pgen", "inst", "ibag", "imod", "igen", "shdr"})
            pdta += chunk(id, t[id]);
        return chunk("RIFF", "sfbk" +
                                 chunk("LIST", "INFO" + chunk("INAM", Bytes("A font\0\0", 8))) +
                                 chunk("LIST", "sdta" + chunk("smpl", smpl)) + chunk("LIST", pdta));
    }
};

/// One preset, one instrument with these zones, one noisy sample.
Font fontOf(const std::vector<Gens>& zones, int rate = 44100) {
    constexpr int count = 40000;
    Font f;
    for (int i = 0; i < count; i++) f.frames.push_back(short(i * 7919));
    f.presets = {{"Preset", {{{instrument, 0}}}}};
    f.instruments = {{"Instrument", zones}};
    f.samples = {{"Noise", 0, count, 1000, 15000, rate}};
    return f;
}

bool readFont(CSF2& font, const Bytes& bytes) {
    CMemoryStream stream;
    stream.write(bytes.data(), int(bytes.size()));
    stream.seek(0, seekStart);
    return font.read(&stream);
}

/// A sampler that imports from files, and counts the messages.
struct Importer : SoundBench, Told {
    TempFolder folder;

    bool import(const Bytes& bytes) {
        return sampler.openSF2(folder.write("a.sf2", bytes), nullptr);
    }
    int told() const { return int(messages.size()); }
    int imported() { return sampler.progs.getCount() - 1; } // without the program of the bench
    CSynthProg* program(int i) { return static_cast<CSynthProg*>(sampler.progs.items(i + 1)); }
    CWavSound* sound(int index, int p = 0) {
        return static_cast<CWavSound*>(program(p)->layer.load()->sounds.items(index));
    }
};

} // namespace

/// A bank of another maker, whole: each preset by number and name, and the frames of its samples.
TEST(CSF2, ImportsWholeBanks) {
    constexpr const char* path = "/usr/share/sounds/sf2/TimGM6mb.sf2";
    std::ifstream in(path, std::ios::binary);
    const Bytes file(std::istreambuf_iterator<char>(in), {});
    const auto number = [&](size_t at) {
        return (unsigned char)file[at] | (unsigned char)file[at + 1] << 8;
    };
    const size_t presets = file.find("phdr") + 8, end = file.find("pbag", presets);
    std::multimap<int, CStr> names; // by number, without the one that closes the table
    for (size_t at = presets; at + 38 < end; at += 38) names.emplace(number(at + 20), &file[at]);

    Importer b;
    ASSERT_TRUE(b.sampler.openSF2(path, nullptr));
    ASSERT_EQ(b.imported(), int(names.size()));
    int program = 0;
    for (const auto& [preset, name] : names) EXPECT_EQ(b.program(program++)->id, name) << preset;
    EXPECT_GT(b.sampler.clips.getCount(), 100);
    for (const auto* clip : b.sampler.clips) {
        const Bytes frames(reinterpret_cast<char*>(clip->data), 2 * size_t(clip->frames));
        EXPECT_NE(file.find(frames), Bytes::npos) << clip->filename.asChar();
    }
}

/// How fast the sample runs. Its rate is not looked at: half the rate sounds an octave higher.
TEST(CSF2, NotesSoundAtTheirPitch) {
    for (const auto& [zone, rate, note, semitones] :
         Rows<Gens, int, int, double>{{{{sampleId, 0}}, 44100, 72, 12},
                                      {{{sampleId, 0}}, 22050, 60, 0},
                                      {{{rootKey, 69}, {sampleId, 0}}, 44100, 60, -9},
                                      {{{coarse, 5}, {fine, -30}, {sampleId, 0}}, 44100, 60, 4.7},
                                      {{{modes, 1}, {sampleId, 0}}, 44100, 48, -12}}) {
        Importer b;
        ASSERT_TRUE(b.import(fontOf({zone}, rate).bytes()));
        CVoice* v = b.play(b.sound(0), note);
        EXPECT_GT(rms(b.render(v, 8192), 0, 8192), 0.1);
        EXPECT_NEAR(12 * std::log2(v->pos / 8192), semitones, 0.01);
        b.sampler.allNotesOff();
    }
}

/// Key, frames, loop, then hundredths of pan and semitone.
TEST(CSF2, ZonesFollowTheirGenerators) {
    constexpr int start = 0, end = 1, loopFrom = 2, startCoarse = 4, pan = 17, loopCoarse = 45;
    Font f = fontOf({{{pan, -250}, {fine, 20}}, // for all zones
                     {{keys, ranged(60, 72)}, {vels, ranged(20, 99)}, {sampleId, 0}},
                     {{start, 100}, {end, -500}, {modes, 3}, {loopFrom, 64}, {sampleId, 1}},
                     {{pan, 500}, {startCoarse, 1}, {loopCoarse, -1}, {sampleId, 0}},
                     {{sampleId, 9}},
                     {{sampleId, 2}}});
    f.presets = {{"Kit", {{{keys, ranged(0, 64)}, {vels, ranged(0, 50)}, {instrument, 0}}}, 5, 128},
                 {"B", {{{instrument, 0}, {keys, ranged(1, 2)}, {instrument, 0}}}, 1},
                 {"A", {}, 1}};
    f.samples.push_back({"No pitch", 1000, 9000, 3000, 8000, 44100, 255});
    f.samples.push_back({"In ROM", 0, 20000, 0, 0, 44100, 60, 0x8001});
    CSF2 font;
    ASSERT_TRUE(readFont(font, f.bytes()));
    ASSERT_EQ(font.getPresetCount(), 3);
    EXPECT_EQ(font.title + font.getPreset(0)->name + font.melodic[1]->name, "A fontBA");
    EXPECT_EQ(font.drums[0], font.getPreset(2));
    const auto& uses = font.getPreset(0)->instruments;
    ASSERT_EQ(uses.size(), 2u);
    EXPECT_EQ(uses[0].hiKey * 1000 + uses[1].hiKey, 127002);
    Bytes zones;
    for (const CSF2SampleClip& z : *uses[0].clips)
        for (float v : {float(z.key), float(z.start), float(z.end), float(z.loop),
                        float(z.loopStart), float(z.loopEnd), z.pan * 100, z.fine * 100})
            zones += std::to_string(std::lround(v)) + " ";
    EXPECT_EQ(zones, "60 0 39999 0 0 39999 -50 20 60 100 7500 1 2064 7000 -50 20 "
                     "60 32768 39999 1 0 15000 100 20 ");

    Importer b;
    ASSERT_TRUE(b.import(f.bytes()));
    const CWavSound* s = b.sound(0, 2);
    EXPECT_EQ(s->lowKey * 1000 + s->hiKey, 60064);
    EXPECT_EQ(s->lowVel * 1000 + s->hiVel, 20050);
    EXPECT_EQ(b.sampler.clips.getCount(), 2); // each serves all uses
    EXPECT_EQ(b.sound(1)->clips[0]->end, 7500);
    EXPECT_EQ(b.sound(1)->clips[0]->loop, loopForward);
}

/// Whatever part of a file is there, it is whole or refused with one message. Any byte may be
/// wrong: what comes through keeps to the frames that are there.
TEST(CSF2, RefusesWhatIsCutOffAndSurvivesWhatIsWrong) {
    Font f = fontOf({{{sampleId, 0}, {modes, 1}}, {{rootKey, 3}, {sampleId, 1}}});
    f.frames.resize(40);
    f.samples.push_back({"Other", 10, 30, 12, 28, 44100});
    const Bytes whole = f.bytes();
    for (size_t n = 0; n < whole.size(); n++) {
        CSF2 font;
        EXPECT_FALSE(readFont(font, whole.substr(0, n))) << n;
        for (int value : {0, 1, 0x7f, 0x80, 0xff}) {
            Bytes bad = whole;
            bad[n] = char(value);
            readFont(font, bad);
            int64_t frames = 0;
            for (const CSF2Sample& s : font.samples) frames += s.used ? s.getFrames() : 0;
            ASSERT_LE(frames, int64_t(whole.size())) << n;
            for (int p = 0; p < font.getPresetCount(); p++)
                for (const CSF2Instrument& use : font.getPreset(p)->instruments)
                    for (const CSF2SampleClip& z : *use.clips)
                        ASSERT_LE(z.end, std::max(0, z.getFrames() - 1)) << n;
        }
    }
    Importer b;
    EXPECT_TRUE(b.import(whole + "garbage at the end"));
    EXPECT_EQ(b.imported() + b.told(), 1);
    EXPECT_FALSE(b.import(whole.substr(0, whole.size() - 1)));
    EXPECT_FALSE(b.sampler.openSF2("/tmp/no such file.sf2", nullptr));
    EXPECT_TRUE(b.told() == 2 && b.imported() == 1);
}

TEST(CSF2, MemoryFollowsTheFile) {
    Font claims = fontOf({});
    for (int i = 0; i < 100; i++) claims.instruments[0].zones.push_back({{sampleId, i}});
    claims.samples.assign(100, claims.samples[0]);
    CSF2 font;
    ASSERT_TRUE(readFont(font, claims.bytes()));
    int64_t frames = 0;
    for (const CSF2Sample& s : font.samples) frames += s.used ? s.getFrames() : 0;
    EXPECT_EQ(frames, 2 * 40000);

    // Every second instrument runs over the same zones once more.
    Font again = fontOf(std::vector<Gens>(1000, {{sampleId, 0}}));
    again.instruments.resize(200, {"Back", {}});
    again.presets[0].zones = {{}};
    for (int i = 0; i < 200; i++) again.presets[0].zones[0].push_back({instrument, i});
    Bytes bytes = again.bytes();
    const size_t inst = bytes.find("inst") + 8;
    for (size_t i = 0; i < 201; i++) bytes.replace(inst + 22 * i + 20, 2, little(i % 2 * 1000, 2));
    ASSERT_TRUE(readFont(font, bytes));
    size_t total = 0;
    for (const CSF2Instrument& use : font.getPreset(0)->instruments) total += use.clips->size();
    EXPECT_EQ(total, 1000u);

    // One preset uses many zones many times.
    again.presets.push_back({"Many", {Gens(2000, {instrument, 0})}});
    Importer b;
    EXPECT_FALSE(b.import(again.bytes()));
    EXPECT_EQ(b.imported() + b.told(), 2);
}
