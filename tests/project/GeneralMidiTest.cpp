#include "data/generalmidi/GeneralMidi.h"
#include "engine/CQV.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "support/TestHost.h"
#include "tools/soundtable/SoundProbe.h"

#include <gtest/gtest.h>

using namespace soundtable;

namespace {

constexpr double shortSeconds = 1.3; ///< enough for the slowest attack

/// A program played by one key, softly and hard, and a chord.
struct Heard {
    Figures figures;
    double span = 0.0, dc = 0.0, range = 0.0;
};

Heard hear(CQV* host, const gm::Family& family, const gm::Program& program) {
    const float level = gm::evenLevel(host, family, program);
    const auto make = [&](CQV* root, CSampler* owner) {
        return gm::buildGmProgram(root, owner, family, program, level);
    };
    const Sound middle = playNote(host, make, {60, 100});
    const Sound soft = playNote(host, make, {60, 20});
    const Sound loud = playNote(host, make, {60, 127});
    Heard heard;
    heard.figures.name = program.name;
    heard.figures.family = family.name;
    heard.figures.shapes = {shapeOf(playNote(host, make, {48, 100})), shapeOf(middle)};
    heard.figures.chordPeak = peakOf(playNote(host, make, {chordKey, 100}));
    heard.figures.lanes = middle.lanes;
    heard.span = loudnessOf(loud) - loudnessOf(soft);
    heard.dc = dcOf(middle);
    std::vector<double> octaves;
    for (const int key : {36, 48, 60, 72, 84, 96})
        octaves.push_back(loudnessOf(playNote(host, make, {key, 100}, shortSeconds)));
    const auto [softest, loudest] = std::ranges::minmax(octaves);
    heard.range = loudest - softest;
    return heard;
}

} // namespace

/// All sound at once, none has an offset that counts or clips with a chord, velocity is heard, no
/// octave jumps out, no two are the same, and songs can afford them.
TEST(GeneralMidi, KeepsTheFiguresOfItsTable) {
    TestHost host(256);
    std::vector<Figures> bank;
    size_t families = 0;
    double lanes = 0.0;
    for (const gm::Family& family : gm::allFamilies()) {
        families++;
        EXPECT_EQ(family.programs.size(), 8u) << family.name;
        const bool bass = std::string(family.name) == "Bass";
        const bool noises = std::string(family.name) == "Sound effects";
        for (const gm::Program& program : family.programs) {
            const Heard heard = hear(host.host, family, program);
            SCOPED_TRACE(program.name);
            EXPECT_LT(heard.dc, noises ? -20 : -35);
            EXPECT_GT(heard.span, 15);
            EXPECT_LT(heard.span, 25);
            EXPECT_LT(heard.range, 6.5);
            EXPECT_LT(heard.figures.chordPeak, bass ? 3 : 0);
            EXPECT_LT(heard.figures.lanes, 8);
            lanes += heard.figures.lanes;
            bank.push_back(heard.figures);
        }
    }
    EXPECT_EQ(families, 16u);
    EXPECT_LT(lanes / double(bank.size()), 3.6);
    // Of different families they are meant to be farther apart still: `othersApart`.
    constexpr double othersReached = 8.5;
    for (const Pair& pair : pairsOf(bank))
        EXPECT_GT(pair.apart, pair.oneFamily() ? familyApart : othersReached)
            << pair.first->name << ", " << pair.second->name;
}
