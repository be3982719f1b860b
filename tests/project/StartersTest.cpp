#include "data/demosong/Starters.h"
#include "ClipFixture.h"
#include "engine/MidiBytes.h"
#include "tools/soundtable/SoundFigures.h"

#include <numeric>

/// The projects that play at once are heard from their first bar on, at a level that leaves room,
/// with highs and without an offset; their notes are those of one scale but for a few.
TEST(Starters, PlayWellAtOnce) {
    for (int which = 0; which < starterCount; which++) {
        SCOPED_TRACE(which);
        ClipFixture f;
        createStarter(f.seq, StarterSong(which));
        int keys[12] = {};
        for (CSongTrack* track : f.seq->getProg()->tracks)
            for (CPart* part : track->parts)
                for (CBaseEvent* e = part->getEvents(); e && track->track->kind == trackMIDI;
                     e = e->next)
                    keys[asByte1(static_cast<CMIDIEvent*>(e)->data) % 12]++;
        int inScale = 0;
        for (int root = 0; root < 12; root++) {
            int count = 0;
            for (const int step : {0, 2, 4, 5, 7, 9, 11}) count += keys[(root + step) % 12];
            inScale = std::max(inScale, count);
        }
        const int notes = std::accumulate(keys, keys + 12, 0);
        EXPECT_GT(notes, 40);
        EXPECT_GT(inScale, notes * 8 / 10);

        const std::vector<float> both = f.play(int(20.0 * double(f.host->rate)) / f.host->frames);
        const auto middle = both.begin() + int(both.size() / 2);
        const soundtable::Sound heard{{both.begin(), middle}, {middle, both.end()}};
        EXPECT_GT(soundtable::loudnessOf(heard), -20);
        EXPECT_LT(soundtable::peakOf(heard), -0.5);
        EXPECT_GT(soundtable::shareAbove(heard, 5000, 2.0, 4.0), -45);
        const double sum = std::accumulate(both.begin(), both.end(), 0.0);
        EXPECT_LT(std::fabs(sum), 4e-3 * double(both.size()));
    }
}
