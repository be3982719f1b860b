#pragma once

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/TempFolder.h"
#include "engine/CMap.h"
#include "engine/CMixer.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "sequencer/song/CSeq.h"
#include "support/TestHost.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// The message boxes that were shown, each as "title: text".
inline std::vector<std::string> shown;
inline bool saysYes; ///< to what they ask

/// A host with a project, without windows.
struct ProjectFixture {
    ProjectFixture() {
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int flags) {
            shown.push_back(std::string(title.asChar()) + ": " + text.asChar());
            return saysYes && (flags & mbYes) ? int(mbYes) : answerOfEscape(flags);
        };
        shown.clear();
        saysYes = false;
        mixer.init();
    }
    ~ProjectFixture() { messageHooks().showMsg = nullptr; }

    const bool entered = (enterCompTypes(), true);
    TestHost device;
    CQV* host = device.host;
    CMixer mixer{host};
    ProjectUi ui;
    Project project{host, &mixer, &ui};

    CComp* comp(int index) { return host->comps.items(index); }

    std::string save() {
        CMemoryStream stream;
        EXPECT_TRUE(saveToStream(project, &stream));
        return {reinterpret_cast<char*>(stream.data), size_t(stream.size)};
    }
    LoadResult load(const std::string& bytes) {
        CMemoryStream stream;
        stream.write(bytes.data(), int(bytes.size()));
        stream.setPos(0);
        return loadFromStream(project, &stream);
    }
    /// After a load that was abandoned: what a new project has, and blocks run.
    void expectEmptyProject() {
        EXPECT_EQ(host->comps.getCount(), 4) << "MIDI in and out, audio in and out";
        EXPECT_TRUE(host->getAudioOut() && host->getAudioOut()->output());
        EXPECT_EQ(host->sends.getCount() + host->samples.getCount(), 0);
        EXPECT_EQ(host->maps.getCount(), 1);
        EXPECT_TRUE(host->projectFile.empty());
        EXPECT_NE(mixer.getProg(0), nullptr);
        device.run(2);
    }
};

/// Makes a WAV or AIFF file with a falling tone.
inline void writeWav(const CStr& path, int frames, int bits = 16, int chs = 2) {
    CSample file;
    file.setFormat(44100, bits, chs);
    file.create(path);
    std::vector<float> tone;
    for (int i = 0; i < frames; ++i)
        tone.push_back(0.5f * std::cos(float(i) * 0.05f) * float(frames - i) / float(frames));
    file.writeFrames(frames, tone.data(), tone.data());
    file.writeHeader();
    file.close();
}

/// The format of project files by its tables alone, as text that is put together.
namespace qvf {

inline std::string number(int v) {
    return {char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
}
inline std::string real(float v) {
    return number(std::bit_cast<int>(v));
}
inline std::string numbers(std::initializer_list<int> list) {
    std::string s;
    for (const int v : list) s += number(v);
    return s;
}
inline std::string bytes(std::initializer_list<int> list) {
    return {list.begin(), list.end()};
}
/// The number at a place of a file.
inline size_t numberAt(const std::string& file, size_t at) {
    int v = 0;
    std::memcpy(&v, &file[at], sizeof v);
    return size_t(v);
}
inline std::string text(const std::string& s) {
    return number(int(s.size())) + s;
}
inline std::string head(const std::string& id, int size) {
    return text(id) + number(size);
}
inline std::string item(const std::string& id, const std::string& payload = "") {
    return head(id, int(payload.size())) + payload;
}
inline std::string comp(const std::string& id, int type, int kind, const std::string& name,
                        const std::string& own = "", int enabled = 1, int flags = 0) {
    return item(id, bytes({1, type, kind}) + numbers({7, 8}) + text(name) +
                        numbers({enabled, flags, 0, 0}) + own);
}
inline std::string cable(const std::string& id, int list, int comp, int io, int toList, int to,
                         int toIO) {
    return item(id,
                bytes({list}) + number(comp) + bytes({io, toList}) + number(to) + bytes({toIO}));
}
inline std::string file(const std::string& items) {
    return text("QVF") + items;
}

} // namespace qvf
