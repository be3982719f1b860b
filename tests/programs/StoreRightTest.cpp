#include "programs/Program.h"

#include <sstream>

namespace {

/// Whether a window's source may say so.
class WindowSource {
public:
    WindowSource() {
        std::istringstream all(WINDOW_INCLUDES);
        for (std::string path; std::getline(all, path, ':');) command.push_back("-I" + path);
        command.push_back(folder.file("window.cpp"));
    }
    bool compiles(const std::string& statements) {
        writeFile(command.back(), "#include \"engine/CQV.h\"\n"
                                  "#include \"common/fx/CEQ.h\"\n"
                                  "#include \"engine/StripValues.h\"\n"
                                  "#include \"engine/ValueDoor.h\"\n"
                                  "#include \"instruments/CSound.h\"\n"
                                  "#include \"sequencer/song/CSeq.h\"\n"
                                  "#include \"sequencer/song/CSongTrack.h\"\n"
                                  "void f(CQV* host, COutputChannel* strip, CComp* comp, CSeq* seq,"
                                  " CSound* sound, CSongTrack* track) {\n" +
                                      statements + "\n}\n");
        Program compiler(command);
        const bool good = compiler.wait() == 0;
        told = compiler.err();
        return good;
    }
    std::string told;

private:
    const TempFolder folder;
    std::vector<std::string> command{COMPILER, "-std=c++20", "-fsyntax-only"};
};

} // namespace

/// Else it would be neither unsaved nor undone, and no recording would take it down.
TEST(StoreRight, WindowsWriteWhatIsStoredThroughTheDoorOnly) {
    WindowSource window;
    ASSERT_TRUE(window.compiles("host->values->set(tempoOf(host), host->songTempo + 1.0);"
                                "host->values->setParam(comp, 3, strip->vol * sound->pan);"))
        << window.told;
    const struct {
        const char *past, *because;
    } cases[] = {{"strip->vol = 0.5f;", "StoreRight"},
                 {"strip->mute = strip->solo;", "StoreRight"},
                 {"strip->eq[0]->setGain(6.0f);", "StoreRight"},
                 {"comp->setParam(3, 0.5f);", "StoreRight"},
                 {"seq->options.bytes[3] = 1;", "StoreRight"},
                 {"track->setMuted(true);", "StoreRight"},
                 {"sound->lfo[0]->rate = 2.0f;", "StoreRight"},
                 {"tempoOf(host).set({90.0});", "private"}};
    for (const auto& c : cases) {
        EXPECT_FALSE(window.compiles(c.past)) << c.past;
        EXPECT_NE(window.told.find(c.because), std::string::npos) << c.past << window.told;
    }
}
