#include "SongFileFixture.h"

#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/SampleValues.h"
#include "instruments/SoundSettings.h"
#include "sequencer/edit/KitEdits.h"
#include "support/StoredPlaces.h"

namespace {

/// The places that a value reaches by the door of windows.
template <class F>
StoredPlaces set(CQV& host, const StoredValue& value, F&& write) {
    const std::string usual = write();
    const StoredValue::Numbers before = value.get();
    StoredPlaces own;
    for (const double to :
         {0.0, 1.0, 2.0, 3.0, -0.7182818, 0.1234567, 0.6180339, 12.3456, 234.5678, 17654.3}) {
        StoredValue::Numbers now = before;
        now[0] = to;
        host.values->set(value, now);
        own.merge(differing(usual, write()));
    }
    EXPECT_FALSE(own.empty()) << value.name().asChar();
    host.values->set(value, before);
    return own;
}

/// Of four frames, owned by the song.
CSampleClip* addClip(CSeq* seq) {
    constexpr int frames = 4;
    auto* clip = new CSampleClip;
    clip->setFormat(44100, 16, 1);
    clip->takeData(static_cast<unsigned char*>(std::calloc(frames, 2)), frames);
    clip->playAll();
    seq->drumClips.add(clip);
    return clip;
}

/// Behind the head of a block, from a byte on.
size_t inBlock(const std::string& bytes, const char* block, size_t from) {
    return bytes.find(block) + std::strlen(block) + sizeof(int) + from;
}

} // namespace

/// Whatever is stored of a drum has a control, or no effect there: it plays at its own key, dry,
/// and what its row shows is no setting.
TEST(KitSettings, AreWhatIsStored) {
    SongFileFixture song, other;
    CLayer* kit = song.track(trackDrum)->track->drumLayer();
    auto* drum = new CDrumSound(kit, &song.host, song.seq);
    CSampleClip* clip = addClip(song.seq);
    drum->addSample(clip); // without one it is dropped
    kit->addSound(drum);
    COutputChannel* strip = drum->output.get();
    const auto write = [&song] { return song.write(); };
    const std::string usual = write();
    StoredPlaces controls = reached(settingsOf(*drum), drum, write);
    controls.merge(reached(clipSettings(*drum), clip, write));
    std::vector<StoredValue> values{muteOf(drum), soloOf(drum), levelOf(strip->sendLevels[0])};
    for (int mark = 0; mark < sampleMarks; mark++) values.push_back(sampleMark(clip, mark));
    for (int band = 0; band < eqBandCount; band++)
        for (const auto& of : {eqPowerOf, eqTypeOf, eqFrequencyOf, eqGainOf, eqQOf})
            values.push_back(of(strip, band));
    for (const StoredValue& value : values) controls.merge(set(song.host, value, write));
    ASSERT_EQ(write(), usual);

    StoredPlaces idle;
    const auto note = [&](auto& field, std::initializer_list<int> numbers) {
        const auto before = field.load();
        for (const int n : numbers) {
            field = static_cast<decltype(before)>(n);
            idle.merge(differing(usual, write()));
        }
        field = before;
    };
    note(drum->flags, {0, 1, -1});
    note(drum->shownParam, {-1, 1, 0x01010101});
    note(drum->dist, {0, 1});
    drum->reserved = 0; // as a sound of a synthesizer
    idle.merge(reached(settingsOf(*drum), drum, write));
    idle.merge(reached(clipSettings(*drum), clip, write));
    idle.merge(differing(usual, write()));
    drum->reserved = 1;
    constexpr size_t band = 18, state = 14; // from there on what sounds in an equaliser
    const size_t bands = inBlock(usual, "soEq2", 0);
    for (size_t at = 0; at < eqBandCount * band; at++)
        if (at % band >= state) idle.insert(bands + at);

    const auto again = [&other](const std::string& bytes) {
        other.read(bytes);
        return other.write();
    };
    StoredPlaces stored =
        storable(usual, again, inBlock(usual, "sound", 0), bands + eqBandCount * band);
    constexpr size_t range = 28, marks = 8; // start and end, behind what the file is
    const size_t sample = inBlock(usual, "smp", range);
    stored.merge(storable(usual, again, sample, sample + marks));
    EXPECT_GT(stored.size(), controls.size() / 2) << "hardly anything was read";
    EXPECT_EQ(missing(missing(stored, controls), idle), StoredPlaces());
}
