#include "SoundFixture.h"

#include "base/CStream.h"
#include "base/Messages.h"
#include "instruments/CSF2.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
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

/// One preset, one instrument with these zones, one sine of `hertz` at `rate`.
Font sineFont(const std::vector<Gens>& zones, double hertz = 441.0, int rate = 44100) {
    constexpr int count = 40000;
    Font f;
    for (int i = 0; i < count; i++)
        f.frames.push_back(short(16000 * std::sin(2 * M_PI * hertz * i / rate)));
    f.presets = {{"Preset", {{{instrument, 0}}}}};
    f.instruments = {{"Instrument", zones}};
    f.samples = {{"Sine", 0, count, 1000, 15000, rate}};
    return f;
}

bool readFont(CSF2& font, const Bytes& bytes) {
    CMemoryStream stream;
    stream.write(bytes.data(), int(bytes.size()));
    stream.seek(0, seekStart);
    return font.read(&stream);
}

/// Hertz at a rate of 44100, by the places where a wave goes up through zero.
double pitchOf(const std::vector<float>& v) {
    std::vector<double> ups;
    for (size_t i = 1; i < v.size(); i++)
        if (v[i - 1] < 0 && v[i] >= 0) ups.push_back(double(i) - double(v[i] / (v[i] - v[i - 1])));
    return double(ups.size() - 1) * 44100 / (ups.back() - ups.front());
}

/// A sampler that imports from files, and counts the messages.
struct Importer : SoundBench {
    static inline int messages = 0;
    std::string path = "/tmp/fontXXXXXX";

    Importer() {
        close(mkstemp(path.data()));
        messages = 0;
        messageHooks().showMsg = [](CWin*, const CStr&, const CStr&, int) { return ++messages; };
    }
    ~Importer() {
        messageHooks().showMsg = nullptr;
        std::filesystem::remove(path);
    }
    bool import(const Bytes& bytes) {
        std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
        return sampler.openSF2(path.c_str(), nullptr);
    }
    int imported() { return sampler.progs.getCount() - 1; } // without the program of the bench
    CSynthProg* program(int i) { return static_cast<CSynthProg*>(sampler.progs.items(i + 1)); }
    CWavSound* sound(int index, int p = 0) {
        return static_cast<CWavSound*>(program(p)->layer.load()->sounds.items(index));
    }
};

/// A second reading of a file: its chunks as byte ranges, its tables by offsets, samples by name.
struct Raw {
    Bytes file;
    std::map<Bytes, std::pair<size_t, size_t>> at; ///< start and size by chunk

    explicit Raw(const char* path) {
        std::ifstream in(path, std::ios::binary);
        file.assign(std::istreambuf_iterator<char>(in), {});
        for (size_t i = 12; i + 8 <= file.size();) {
            const Bytes id = file.substr(i, 4);
            const auto size = size_t(number(i + 4, 4));
            if (id != "LIST") at[id] = {i + 8, size};
            i += id == "LIST" ? 12 : 8 + size;
        }
    }
    /// A number of 2 or 4 bytes.
    int number(size_t i, int bytes = 2) const {
        int value = 0;
        std::memcpy(&value, &file[i], size_t(bytes));
        return value;
    }
    int field(const char* id, int record, int size, int offset, int bytes = 2) const {
        return number(at.at(id).first + size_t(record * size + offset), bytes);
    }
    Bytes text(const char* id, int record, int size) const {
        return file.substr(at.at(id).first + size_t(record * size), 20).c_str();
    }

    /// The value of a generator in a zone, `none` without it. The last one counts.
    int gen(const char* bags, const char* gens, int bag, int id, int none) const {
        for (int g = field(bags, bag, 4, 0); g < field(bags, bag + 1, 4, 0); g++)
            if (field(gens, g, 4, 0) == id) none = field(gens, g, 4, 2);
        return none;
    }

    /// Keys and velocities, and the sample, of each sound that a preset asks for.
    std::vector<std::array<int, 5>> sounds(int preset) const {
        constexpr int full = 127 << 8;
        std::vector<std::array<int, 5>> list;
        for (int b = field("phdr", preset, 38, 24); b < field("phdr", preset + 1, 38, 24); b++) {
            const int inst = gen("pbag", "pgen", b, instrument, -1);
            if (inst < 0) continue;
            for (int z = field("inst", inst, 22, 20); z < field("inst", inst + 1, 22, 20); z++) {
                const int sample = gen("ibag", "igen", z, sampleId, -1);
                if (sample < 0) continue;
                std::array<int, 5> s{};
                for (int i = 0; i < 2; i++) {
                    const int p = gen("pbag", "pgen", b, keys + i, full);
                    const int q = gen("ibag", "igen", z, keys + i, full);
                    s[size_t(2 * i)] = std::max(p & 255, q & 255);
                    s[size_t(2 * i + 1)] = std::min(p >> 8, q >> 8);
                }
                s[4] = sample;
                list.push_back(s);
            }
        }
        return list;
    }
};

} // namespace

/// The banks of Debian, whole: each preset by number and name, each sound by its ranges and sample,
/// and every frame.
TEST(CSF2, ImportsWholeBanks) {
    for (const char* path :
         {"/usr/share/sounds/sf2/TimGM6mb.sf2", "/usr/share/sounds/sf2/FluidR3_GM.sf2"}) {
        const Raw raw(path);
        const int count = int(raw.at.at("phdr").second) / 38 - 1;
        std::vector<int> order;
        for (int i = 0; i < count; i++) order.push_back(i);
        std::ranges::stable_sort(order, {}, [&](int i) { return raw.field("phdr", i, 38, 20); });

        Importer b;
        ASSERT_TRUE(b.sampler.openSF2(path, nullptr)) << path;
        ASSERT_EQ(b.imported(), count);
        std::map<int, const CSampleClip*> clips;
        for (int i = 0; i < count; i++) {
            EXPECT_EQ(b.program(i)->id, raw.text("phdr", order[size_t(i)], 38).c_str());
            auto want = raw.sounds(order[size_t(i)]);
            for (int k = 0; const CWavSound* s = b.sound(k, i); k++) {
                const int sample = want.at(size_t(k))[4];
                if (!clips[sample]) clips[sample] = s->clips[0];
                ASSERT_EQ(clips[sample], s->clips[0]);
                ASSERT_EQ((std::array{s->lowKey.load(), s->hiKey.load(), s->lowVel.load(),
                                      s->hiVel.load(), sample}),
                          want[size_t(k)]);
            }
            EXPECT_EQ(b.program(i)->layer.load()->sounds.getCount(), int(want.size()));
        }
        EXPECT_EQ(b.sampler.clips.getCount(), int(clips.size()));
        for (const auto& [sample, clip] : clips) {
            const int from = raw.field("shdr", sample, 46, 20, 4);
            const int to = raw.field("shdr", sample, 46, 24, 4);
            ASSERT_EQ(clip->frames, to - from) << raw.text("shdr", sample, 46);
            EXPECT_EQ(clip->filename, raw.text("shdr", sample, 46).c_str());
            const char* bytes = raw.file.data() + raw.at.at("smpl").first + 2 * size_t(from);
            ASSERT_EQ(std::memcmp(clip->data, bytes, 2 * size_t(to - from)), 0);
        }
    }
}

/// The rate of a sample is not looked at: half the rate sounds an octave higher.
TEST(CSF2, NotesSoundAtTheirPitch) {
    struct Case {
        Gens zone;
        int rate, note;
        double hertz;
    };
    const Case cases[] = {
        {{{sampleId, 0}}, 44100, 60, 441},
        {{{sampleId, 0}}, 44100, 72, 882},
        {{{sampleId, 0}}, 22050, 60, 882},
        {{{rootKey, 69}, {sampleId, 0}}, 44100, 60, 441 * std::pow(2, -9.0 / 12)},
        {{{coarse, 5}, {fine, -30}, {sampleId, 0}}, 44100, 60, 441 * std::pow(2, 4.7 / 12)},
        {{{modes, 1}, {sampleId, 0}}, 44100, 48, 220.5},
    };
    for (const Case& c : cases) {
        Importer b;
        ASSERT_TRUE(b.import(sineFont({c.zone}, 441.0, c.rate).bytes()));
        const double hertz = pitchOf(b.render(b.play(b.sound(0), c.note), 8192));
        EXPECT_NEAR(1200 * std::log2(hertz / c.hertz), 0, 1) << c.hertz;
        b.sampler.allNotesOff();
    }
}

/// Key, frames, loop, then hundredths of pan and semitone.
TEST(CSF2, ZonesFollowTheirGenerators) {
    constexpr int start = 0, end = 1, loopFrom = 2, startCoarse = 4, pan = 17, loopCoarse = 45;
    Font f = sineFont({{{pan, -250}, {fine, 20}}, // for all zones
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
    Font f = sineFont({{{sampleId, 0}, {modes, 1}}, {{rootKey, 3}, {sampleId, 1}}});
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
    EXPECT_EQ(b.imported() + Importer::messages, 1);
    EXPECT_FALSE(b.import(whole.substr(0, whole.size() - 1)));
    EXPECT_FALSE(b.sampler.openSF2("/tmp/no such file.sf2", nullptr));
    EXPECT_EQ(Importer::messages, 2);
    EXPECT_EQ(b.imported(), 1);
}

TEST(CSF2, ImportIsPartOfAStep) {
    Importer b;
    std::ofstream(b.path, std::ios::binary) << sineFont({{{sampleId, 0}}}).bytes();
    CUndo* step = b.host.host->undoStart("Drop", &b.sampler, 0);
    EXPECT_TRUE(b.sampler.openSF2(b.path.c_str(), step));
    EXPECT_EQ(b.imported() + b.sampler.clips.getCount(), 0);
    b.host.host->undoEnd(step, false);
    b.host.host->settle();
    EXPECT_EQ(b.imported() + b.sampler.clips.getCount(), 2);
    b.host.host->undoClicked();
    b.host.host->settle();
    EXPECT_EQ(b.imported() + b.sampler.clips.getCount(), 0);
}

TEST(CSF2, MemoryFollowsTheFile) {
    Font claims = sineFont({});
    for (int i = 0; i < 100; i++) claims.instruments[0].zones.push_back({{sampleId, i}});
    claims.samples.assign(100, claims.samples[0]);
    CSF2 font;
    ASSERT_TRUE(readFont(font, claims.bytes()));
    int64_t frames = 0;
    for (const CSF2Sample& s : font.samples) frames += s.used ? s.getFrames() : 0;
    EXPECT_EQ(frames, 2 * 40000);

    // Every second instrument runs over the same zones once more.
    Font again = sineFont(std::vector<Gens>(1000, {{sampleId, 0}}));
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
    EXPECT_EQ(b.imported() + Importer::messages, 2);
}
