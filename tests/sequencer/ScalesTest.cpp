#include "sequencer/song/Scales.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

/// Every key has a nearest one in each scale, itself where it belongs; up and down as many degrees
/// lead back, and a degree up is the next key of the scale.
TEST(Scales, HoldTheirKeys) {
    for (int kind = 0; kind < scaleCount; kind++)
        for (int root = 0; root < octaveKeys; root++)
            for (int key = 0; key < 128; key++) {
                const Scale scale{root, kind};
                const int near = scale.nearest(key);
                ASSERT_TRUE(scale.has(near)) << scaleName(kind) << " " << root << " " << key;
                for (int other = 0; other < 128; other++)
                    if (scale.has(other)) {
                        ASSERT_LE(std::abs(near - key), std::abs(other - key)) << key;
                    }
                if (key < 24 || key > 103) continue;
                for (const int by : {1, 2, 5, 7})
                    ASSERT_EQ(scale.moved(scale.moved(near, by), -by), near) << by;
                for (int between = near + 1; between < scale.moved(near, 1); between++)
                    ASSERT_FALSE(scale.has(between));
            }
    const Scale minor{9, scaleMinor}; // A
    EXPECT_EQ(minor.moved(61, 2), 65) << "C# stays a semitone over the degree below";
    EXPECT_EQ(minor.moved(127, 3), 127);
    EXPECT_EQ((Scale{}.moved(60, 5)), 65) << "semitones without a scale";
}

/// A chord is found in any octaves and with any of its keys lowest; the one of the lowest key is
/// preferred where its keys form several.
TEST(Scales, ChordsAreFoundAsTheyWereStamped) {
    for (int kind = 0; kind < int(chordKinds().size()); kind++)
        for (int root = 36; root < 48; root++) {
            std::set<int> keys, spread;
            for (const int above : chordKinds()[size_t(kind)].keys()) {
                keys.insert(root + above);
                spread.insert(root + above + (above ? 24 : 0));
            }
            for (const std::set<int>& form : {keys, spread}) {
                const FoundChord found = findChord(form);
                EXPECT_EQ(found.kind, kind) << chordKinds()[size_t(kind)].title;
                EXPECT_EQ(found.root, root % octaveKeys);
                EXPECT_EQ(found.bass, root % octaveKeys);
            }
        }
    const FoundChord turned = findChord({64, 67, 72});
    EXPECT_EQ(turned.kind, 0);
    EXPECT_EQ(turned.root, 0);
    EXPECT_EQ(turned.bass, 4);
    EXPECT_EQ(findChord({60, 61, 62}).kind, -1);
    EXPECT_EQ(findChord({}).kind, -1);
    EXPECT_EQ(findChord({60}).kind, -1);
}
