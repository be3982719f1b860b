#pragma once

#include "ProjectFixture.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "project/ClipContent.h"
#include "project/ClipDrop.h"
#include "project/ClipFiles.h"
#include "project/SongSounds.h"

#include <algorithm>
#include <filesystem>
#include <functional>

/// A project with a song, and what clips and presets are made from.
struct ClipFixture : ProjectFixture {
    CSeq* seq = addSequencer(host);
    TempFolder files;

    ClipFixture() {
        host->loop = seq->getProg()->loop = 0;
        runAlone();
    }

    CSongTrack* track(int kind) { return seq->addTrack(kind, seq->getProg(), nullptr); }

    /// A file in the pool.
    CSample* addFile(const char* name, int bits, int chs, int frames) {
        writeWav(files.file(name), frames, bits, chs);
        return host->addSample(files.file(name), 1);
    }

    /// A bar in which two files play, one of them backward and from half of its frames on.
    CPart* addAudio(CSongTrack* to) {
        auto* part = new CAudioPart;
        part->multiclip = 1;
        part->chs = 2;
        CSample* both[] = {addFile("little.wav", 16, 2, 100), addFile("BIG.AIF", 24, 1, 60)};
        for (int i = 0; i < 4; ++i) {
            CAudioEvent* event = createAudioEvent();
            event->sample = both[i % 2];
            event->end = event->sample->frames - 1;
            event->start = i % 2 ? event->end / 2 : 0;
            event->reverse = (unsigned char)(i % 2);
            part->addEvent(240 * i, event);
        }
        return add(part, 960, to);
    }
    CPart* addNotes(CSongTrack* to) {
        auto* part = new CMIDIPart;
        part->offset = -120;
        for (int i = 0; i < 4; ++i) {
            CMIDIEvent* note = createMIDIEvent();
            note->data = 0x640090 | ((60 + i) << 8);
            note->length = 120;
            part->addEvent(240 * i, note);
        }
        return add(part, 960, to);
    }
    void addDrum(CLayer* layer, const char* name, float pan) {
        auto* clip = new CSampleClip;
        writeWav(files.file(name), 200, 16, 1);
        clip->open(files.file(name));
        clip->filename = name;
        seq->drumClips.add(clip);
        auto* sound = new CDrumSound(layer, host, seq);
        sound->addSample(clip);
        sound->pan = pan;
        layer->addSound(sound);
    }
    CPart* addHits(CSongTrack* to) {
        addDrum(to->track->drumLayer(), "low.wav", -0.5f);
        addDrum(to->track->drumLayer(), "high.wav", 0.5f);
        auto* part = new CDrumPart;
        for (int i = 0; i < 3; ++i) {
            CDrumEvent* hit = createDrumEvent();
            hit->sound = i % 2;
            hit->tune = 1.5f;
            part->addEvent(120 * i, hit);
        }
        return add(part, 480, to);
    }
    static CPart* add(CPart* part, int length, CSongTrack* to) {
        part->id = "Part";
        part->length = length;
        return to->addPart(part, nullptr);
    }
    /// A part of a kind, on a track of its own; notes have two synthesizers.
    CPart* add(int partType) {
        if (partType == partAudio) return addAudio(track(trackAudio));
        if (partType == partDrum) return addHits(track(trackDrum));
        CSongTrack* notes = track(trackMIDI);
        for (int program : {3, 7}) addSynthesizer(seq, notes->track, program)->setProg(program);
        return addNotes(notes);
    }

    std::string clipOf(CPart* part) {
        CMemoryStream stream;
        writeClipFile(&stream, seq, part);
        return {reinterpret_cast<char*>(stream.data), size_t(stream.getPos())};
    }
    /// A file, new each time: writing over one would wait for the disk.
    CStr put(const char* name, const std::string& bytes) {
        std::filesystem::remove(files.file(name).asChar());
        return files.write(name, bytes);
    }
    CPart* drop(const std::string& bytes, CSongTrack* onto = nullptr, int tick = 0) {
        ClipContent content(seq);
        const CStr path = put("dropped.qvc", bytes);
        CFileStream stream(path, 0);
        return content.read(&stream) ? dropClip(content, seq, onto, tick, path) : nullptr;
    }
    void undo() { device.undo(); }
    void redo() { device.redo(); }
    /// The last step changes the project, and leads back and forth.
    void expectStep(const std::string& before) {
        const std::string after = save();
        EXPECT_TRUE(after != before);
        for (int i = 0; i < 2; ++i) {
            undo();
            EXPECT_TRUE(save() == before);
            redo();
            EXPECT_TRUE(save() == after);
        }
    }
    /// A block off the device, which leaves the song to the interface.
    void runAlone() {
        const GraphHold hold(host);
        host->prepare(host->frames);
        host->process(host->frames);
    }
    /// What the song sounds like from its start on, both sides.
    std::vector<float> play(int blocks) {
        host->setPos(0.0);
        device.forget();
        host->start();
        device.run(blocks);
        host->stop();
        host->setPos(0.0);
        runAlone();
        std::vector<float> all = device.left;
        all.insert(all.end(), device.right.begin(), device.right.end());
        return all;
    }
    bool sounds() {
        const std::vector<float> all = play(40);
        return std::ranges::any_of(all, [](float v) { return std::abs(v) > 0.01f; });
    }
};

/// Calls `visit` with each text that `bytes` become when they are cut, or when the four bytes at a
/// place say a number that no file can hold.
inline void eachDamage(const std::string& bytes, const std::function<void(std::string)>& visit) {
    for (size_t i = 0; i < bytes.size(); ++i) visit(bytes.substr(0, i));
    const int numbers[] = {-1, 0x7FFFFFFF, int(0x80000000), 100000};
    for (size_t i = 0; i + 4 <= bytes.size(); ++i) {
        std::string wild = bytes;
        visit(wild.replace(i, 4, qvf::number(numbers[i % 4])));
    }
}
