#include "project/ProjectFixture.h"
#include "project/QvText.h"

#include <sstream>

namespace {

constexpr int level = 0x2000, levelFrames = 8; ///< of the sample: a quarter of full scale

/// The content of an arpeggiator, whose blocks do not tell their lengths.
std::string arp() {
    using namespace qvf;
    std::string s;
    for (const auto& [name, v] :
         {std::pair{"enabled", 0}, {"latch", 0}, {"ccgate", 7}, {"ccswing", -1}, {"progi", 0}})
        s += item(name, number(v));
    s += head("prog", 7 + 36) + text("program") + numbers({2, 3});
    for (const float v : {0.5f, 0.75f, 120.0f, 0.25f, 0.125f, 0.5f}) s += real(v);
    s += numbers({1, 0, 0, 0, 0, 0, 0, 0});
    std::string hex;
    for (const unsigned char c : s) hex += {"0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
    return hex;
}

/// What ends each track.
std::string trackEnd() {
    return "  arp " + arp() + "\n  arped 20 60 400 300 0 0 -1 0\n";
}

std::string trackHead(int kind, const std::string& name, int folder, int channel) {
    return "  track " + std::to_string(kind) + " 2 \"" + name + "\" 41 200 300 " +
           std::to_string(folder) + " 1 " + std::to_string(channel) + R"( 1 1 9
  trackCol 1193046
  trackInSens 80
  tracked 10 60 400 300 0 0 -1 0
  trackGroove 0 -1 0.5 120 3 0 0.25 -0.5
)";
}

const char* const strip = R"(strip2 1 0 0 1 0 0 1 0 -1 -1 -1 -1
eq 0 0 100 0 0.5 0 1 1000 3 1 0 1 2000 0 1 0 2 8000 0 0.5
eq2 0 0 100 0 0.5 1 2 3 0 0 1 1000 3 1 0 0 0 -1 0 1 2000 0 1 0 0 0 0 0 2 8000 0 0.5 0 0 0 0
)";

std::string component(int type, int kind, const std::string& name) {
    const bool blocks = type >= 10 && type <= 13, unknown = type == 77;
    return "comp2 1 " + std::to_string(type) + " " + std::to_string(kind) + " 7 8 \"" + name +
           "\" 1 2" +
           (blocks || type == 4 ? "\n"
            : unknown           ? " 6f646400\n"
                                : " -\n");
}

const char* const window = "comped 5 6 400 300 0 0 -1 0\nhideChs 0\n";

/// A tone of one level on an audio track at beat 1, a note at half of it, and all that a project
/// can hold besides.
std::string project() {
    std::ostringstream s;
    s << R"(bpm 240
loop 0
audiodir "tune_audio"
samples2 2 "level" 44100 16 1 0 1 8 00200020002000200020002000200020 "/no/such.wav" 48000 24 2 1 0 -1
samples 2 "level" 44100 16 1 0 00200020002000200020002000200020 "/no/such.wav" 48000 24 2 1 -1
page "Mixer"
pagei 1
pageModular 1
)" << component(1, 0, "Host")
      << "comped 1 2 300 400 0 1 -1 0\nhideChs 0\n"
      << component(11, 1, "MIDI out") << "  device ff\n"
      << window << "min\n"
      << component(13, 1, "Out") << "  chs 02\n  devs 0001\n"
      << window << "min\nain 2\naout 2\n"
      << strip << "sends 1 0\n"
      << component(4, 1, "Song");
    s << "  options";
    for (int i = 0; i < 32; i++) s << ' ' << i;
    s << "\n  sync 1\n  mxv 9\n  snap 0 1 0 5\n"
      << "  smp \"hit.wav\" 4 16 1 44100 1 3 0001000200030004\n"
      << trackHead(1, "Folder", -1, 0) << trackEnd() << trackHead(2, "Notes", 0, -1)
      << "  sub \"Velocity\" 1 0 50 -1 7\n  subex 1\n"
      << trackEnd() << trackHead(3, "Sound", 0, 0);
    // A component, a bus, an insert, a channel of the song, a send, the host, and a controller.
    for (const char* link : {"1 3 0 0 0 0", "3 0 0 0 0 0", "4 0 0 0 1 3", "6 1 1 2 0 0",
                             "7 0 0 0 1 3", "0 -1 0 0 0 0"})
        s << "  sub \"Lane\" 1 0 50 -102 0 1 3 " << link << "\n  subex 0\n";
    s << "  sub \"Control\" 0 0 50 -102 7 0 4 0 0 0 0 0 0\n  subex 0\n"
      << trackEnd() << trackHead(5, "Drums", -1, 9) << R"(  drumprogid "Kit"
  sound 1 "hit" 0 3 0.5 -0.25 1 0.75 0.5 0 2 0.5 20 12 0.25 0.125 0 1 0 1 100 2 120 1 0 61 127 1 2
  soStyle 1
  soParam 4
  soInsert2 1 77 4 5 6 "Old" 1 0 beef
  soInsertAin 1
  soInsertAout 2
  soInsert2wet 0.5
  soSends 1 0.25
  soEq2 0 0 100 0 0.5 1 2 3 0 1 1 1000 3 1 0 0 0 -1 0 1 2000 0 1 0 0 0 0 0 2 8000 0 0.5 0 0 0 0
)" << trackEnd()
      << R"(  trackmc 1
  part 2 1 0 -1 0 -5 1920 1 "master"
  partCol 11259375
  mevents 2 480 1 6569104 240 600 0 4196272
  amevents 3 2 0 0 0.25 0 1 96 1 1 -0.5 0
  progi 0
  prog 0 1 960 4800 "First"
  ptrack 0
  ptrack 2
  part 2 1 1 0 0 0 1920 1 "ghost"
  ptrack 0
  part 2 2 1 -1 0 0 1920 1 "tone"
  partCol -1
  achs 2
  aevents2 2 960 0 0 0 0.5 0 0 0 0 7 960 0 0 0 0 0 0 30 1 1 2 0.5 -0.5 2 1 5 900 480 -3 0.25 100 0.5 200 -0.5
  aevents 2 960 0 0 0.5 0 0 0 0 7 960 0 0 0 30 1 1 0.5 -0.5 2 1 5 900 480 -3 0.25 2
  multiclip 1
  ptrack 0
  part 2 3 1 -1 0 0 96000 1 "hits"
  partCol 5
  devents 2 90000 0 1 240 0 6 0 0 96 2 0 0.5 2 2
  marker "A" 3 1 960 480 4 4 120
  amarker -1
  timesig "t" 0 3840 7 8 -1 5
  tempo 0 3840 240
  editored 30 60 400 300 0 0 -1 0
  edopt)";
    for (int i = 0; i < 32; i++) s << ' ' << 31 - i;
    s << "\n  ed-noteh 11\n  editorpp 2 0\n"
      << window << "min\nmin\nmout\nain 2\naout 2\n"
      << strip << "sends 1 0.5\naout 2\n"
      << strip << "sends 1 0\naoutCurCh 1\n"
      << component(9, 1, "Group") << window << "min\nain 2\naout 1\n"
      << strip << "sends 1 0.25\ninsert2 1 77 4 5 6 \"Insert\" 1 2 c0ffee\n"
      << "compedi 5 6 400 300 0 0 -1 0\nmini\nmouti\naini 2\naouti 1\nwet 0.5\n"
      << component(77, 1, "Unknown") << window << "mout\n"
      << component(9, 3, "Bus") << window << "min\nain 2\naout 2\n"
      << strip;
    s << R"(mixer
  mxv 05000000
  progi 00000000
  prog 0100000041
  sh 00000000
mixed 1 1 1 1 1 1 1 1
mc 0 2 0 0 0 0
ac 0 2 0 0 1 0
ac 0 3 0 0 1 0
ac 2 0 0 0 1 0
mc 0 4 0 0 1 0
ccplay 20
ccstop 21
ccrew 22
ccrec 23
ccbpm 24
cm "Live" 3
cmap 1 3 0 0 0 1 0 74 10 90
cmap 3 0 0 0 0 2 -2 75 0 127
cmap 4 0 3 0 0 2 -2 76 0 127
cmap 6 0 2 1 0 2 0 77 0 127
cmap 7 3 0 0 0 2 0 78 0 127
cmi 0
cmed 5 6 7 8 0 0 -1 0
modsb 1 180
)";
    return s.str();
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> all;
    for (std::string line; std::getline(in, line);) all.push_back(line);
    return all;
}

} // namespace

/// A file by the tables alone loads without a word, plays as calculated, and comes back as it was.
TEST(Format, AForeignFilePlaysAndComesBack) {
    ProjectFixture f;
    ASSERT_EQ(f.load(toFile(project())), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    EXPECT_EQ(linesOf(toText(f.save())), linesOf(project()));

    f.device.out = static_cast<CAudioOut*>(f.host->getAudioOut());
    f.device.forget();
    f.host->start();
    f.device.run(12);
    constexpr int beat = 44100 / 4; // at 240 beats a minute
    constexpr float throughBus = 0.5f * 0.5f, tone = float(level) / 32768 * (1 + throughBus);
    for (int i = 0; i < beat + 500; i++) {
        const int after = i - beat - (levelFrames - 1); // the last frame runs out slowly
        const double wanted = i < beat ? 0.0 : double(tone) * std::pow(0.999, std::max(after, 0));
        ASSERT_NEAR(f.device.left[size_t(i)], wanted, 1e-5) << i;
    }
    // Ticks 480 and, as a note ends one tick early, 480 + 240 - 1.
    ASSERT_EQ(f.device.sent.size(), 2u);
    EXPECT_EQ(f.device.sent[0].data, 0x643C90);
    EXPECT_NEAR(f.device.sent[0].frame, 480 * beat / 960.0 - 5 * 1024, 0.5);
    EXPECT_EQ(f.device.sent[1].data, 0x003C90);
    EXPECT_NEAR(f.device.sent[1].frame, 719 * beat / 960.0 - 8 * 1024, 0.5);
}

/// Wherever a file was cut off, what stands in front of that is there; an item that was cut itself
/// is told, and leaves an empty project that works.
TEST(Format, EveryCutIsTold) {
    ProjectFixture f;
    const std::string file = toFile(project());
    constexpr size_t magic = 7, step = 5;
    size_t end = magic, content = magic;
    for (size_t cut = magic; cut <= file.size(); cut += step) {
        while (end < cut) {
            const auto number = [&file](size_t at) {
                return size_t((unsigned char)file[at]) | size_t((unsigned char)file[at + 1]) << 8 |
                       size_t((unsigned char)file[at + 2]) << 16;
            };
            content = end + number(end) + 8;
            end = content + number(content - 4);
        }
        shown.clear();
        const bool torn = cut >= content && cut < end;
        ASSERT_EQ(f.load(file.substr(0, cut)), torn ? LoadResult::abandoned : LoadResult::good)
            << cut;
        ASSERT_EQ(shown.size(), torn ? 1u : 0u) << cut;
        if (torn) f.expectEmptyProject();
        f.device.run(1);
    }
}
