#include "sequencer/edit/Transform.h"

#include "engine/MidiBytes.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CPart.h"

#include <gtest/gtest.h>

namespace {

struct Made {
    int tick, key, length, velocity;
};

std::unique_ptr<CPart> partOf(const std::vector<Made>& notes, int partType = partMIDI) {
    std::unique_ptr<CPart> part = emptyPart(partType);
    for (const Made& n : notes) {
        if (partType == partDrum) {
            CDrumEvent* hit = createDrumEvent();
            hit->sound = n.key;
            hit->length = n.length;
            hit->velocity = float(n.velocity) / 127;
            part->addEvent(n.tick, hit);
            continue;
        }
        CMIDIEvent* note = createMIDIEvent();
        note->data = asData(midiNoteOn, n.key, n.velocity);
        note->length = n.length;
        part->addEvent(n.tick, note);
    }
    return part;
}

/// Tick, key or sound, length and velocity of each.
std::string told(CPart* part) {
    std::string text;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        const bool drums = part->type == partDrum;
        const int data = drums ? 0 : static_cast<CMIDIEvent*>(e)->data;
        const auto* hit = static_cast<CDrumEvent*>(e);
        const int* length = eventLength(part->type, e);
        text +=
            std::to_string(tick) + ":" + std::to_string(drums ? hit->sound : asByte1(data)) + ":" +
            std::to_string(length ? *length : 0) + ":" +
            std::to_string(drums ? int(std::lround(double(hit->velocity) * 127)) : asByte2(data)) +
            " ";
    });
    return text;
}

const std::vector<Made> chordAndNote = {
    {10, 60, 200, 40}, {10, 64, 200, 60}, {10, 67, 200, 80}, {500, 62, 100, 100}};

struct Case {
    const char* name;
    int kind;
    TransformValues values;
    const char* becomes;
};
const Case cases[] = {
    {"whole",
     transformQuantize,
     {100, 0, 100, 0},
     "0:60:200:40 0:64:200:60 0:67:200:80 480:62:100:100 "},
    {"by half, ends too",
     transformQuantize,
     {50, 0, 100, 1},
     "5:60:220:40 5:64:220:60 5:67:220:80 490:62:170:100 "},
    // The line at 240 stands 120 * 40 / 100 = 48 later, that at 480 where it stood.
    {"swing",
     transformQuantize,
     {100, 40, 100, 0},
     "0:60:200:40 0:64:200:60 0:67:200:80 480:62:100:100 "},
    {"only what is near",
     transformQuantize,
     {100, 0, 10, 0},
     "0:60:200:40 0:64:200:60 0:67:200:80 500:62:100:100 "},
    {"inverted", transformInvert, {2}, "10:72:200:40 10:76:200:60 10:67:200:80 500:86:100:100 "},
    {"inverted down",
     transformInvert,
     {-1},
     "10:60:200:40 10:64:200:60 10:55:200:80 500:50:100:100 "},
    {"spread", transformSpread, {1}, "10:60:200:40 10:76:200:60 10:67:200:80 500:62:100:100 "},
    {"degrees of A minor",
     transformDegrees,
     {2},
     "10:64:200:40 10:67:200:60 10:71:200:80 500:65:100:100 "},
    {"legato",
     transformLegato,
     {20, 0, 0, 0},
     "10:60:470:40 10:64:470:60 10:67:470:80 500:62:100:100 "},
    {"scaled",
     transformVelocity,
     {200, 10, 1, 120},
     "10:60:200:90 10:64:200:120 10:67:200:120 500:62:100:120 "},
    {"ramp",
     transformRamp,
     {20, 118, 0, 0},
     "10:60:200:20 10:64:200:20 10:67:200:20 500:62:100:118 "},
    {"compressed about 70",
     transformCompress,
     {50, 0, 0, 0},
     "10:60:200:55 10:64:200:65 10:67:200:75 500:62:100:85 "},
    {"as far as all go",
     transformTranspose,
     {48, 0, 0, 0},
     "10:108:200:40 10:112:200:60 10:115:200:80 500:110:100:100 "},
    {"stretched",
     transformStretch,
     {50, 0, 0, 0},
     "10:60:100:40 10:64:100:60 10:67:100:80 255:62:50:100 "},
    {"reversed", transformReverse, {}, "10:62:100:100 400:60:200:40 400:64:200:60 400:67:200:80 "},
    {"mirrored", transformMirror, {}, "10:67:200:40 10:63:200:60 10:60:200:80 500:65:100:100 "},
    {"arpeggio down",
     transformArpeggiate,
     {120, 1, 0, 0},
     "10:67:120:80 130:64:120:60 250:60:120:40 500:62:120:100 "},
    {"strum",
     transformStrum,
     {20, 0, 50, 0},
     "10:60:200:40 30:64:180:30 50:67:160:20 500:62:100:100 "},
};

TEST(Transform, DoesWhatItsFormulaTells) {
    for (const Case& c : cases) {
        const std::unique_ptr<CPart> part = partOf(chordAndNote);
        transformEvents(part.get(), c.kind, c.values, {240, 0, 127, [](int) {
                                                           return Scale{9, scaleMinor};
                                                       }});
        EXPECT_EQ(told(part.get()), c.becomes) << c.name;
    }
}

TEST(Transform, ChangesWhatIsSelectedAndStaysWithinBounds) {
    std::unique_ptr<CPart> part = partOf(chordAndNote);
    select(part->getEvents(), true);
    transformEvents(part.get(), transformTranspose, {-48, 0, 0, 0}, {240, 0, 127});
    EXPECT_EQ(told(part.get()), "10:12:200:40 10:64:200:60 10:67:200:80 500:62:100:100 ");
    for (int kind = 0; kind < int(transformShapes().size()); kind++)
        for (const bool most : {false, true}) {
            part = partOf({{0, 0, 1, 1}, {0, 3, 1 << 30, 127}, {3, 2, 5, 64}}, partDrum);
            TransformValues v{};
            for (size_t i = 0; i < v.size(); i++) {
                const TransformValue& range = transformShapes()[size_t(kind)].values[i];
                v[i] = most ? range.most : range.least;
            }
            transformEvents(part.get(), kind, v, {240, 0, 3});
            int count = 0;
            eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
                const auto* hit = static_cast<CDrumEvent*>(e);
                EXPECT_TRUE(tick >= 0 && hit->length >= 1 && hit->sound >= 0 && hit->sound <= 3 &&
                            hit->velocity > 0 && hit->velocity <= 1)
                    << kind << " " << tick << " " << hit->length << " " << hit->sound;
                count++;
            });
            EXPECT_EQ(count, 3);
        }
}

TEST(Transform, HumanisesTheSameWayForTheSameVariation) {
    const auto humanised = [](int variation) {
        const std::unique_ptr<CPart> part = partOf(chordAndNote);
        transformEvents(part.get(), transformHumanise, {5, 10, 10, variation}, {240, 0, 127});
        return told(part.get());
    };
    EXPECT_EQ(humanised(3), humanised(3));
    EXPECT_NE(humanised(3), humanised(4));
}

TEST(Transform, ThinsMessagesAndKeepsTheLast) {
    const std::unique_ptr<CPart> part = emptyPart(partMIDI);
    for (int i = 0; i <= 10; i++) {
        CMIDIEvent* message = createMIDIEvent();
        message->data = asData(midiController, 7, i * 2);
        part->addEvent(i * 10, message);
    }
    transformEvents(part.get(), transformThin, {30, 0, 0, 0}, {});
    std::string left;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        left += std::to_string(tick) + "=" +
                std::to_string(asByte2(static_cast<CMIDIEvent*>(e)->data)) + " ";
    });
    EXPECT_EQ(left, "0=0 30=6 60=12 90=18 100=20 ");
}

} // namespace
