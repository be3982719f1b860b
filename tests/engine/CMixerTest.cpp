#include "engine/CMixer.h"
#include "base/CStream.h"
#include "engine/MixScene.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

/// A stored mixer with two programs, behind an item of another version: cut anywhere, with any byte
/// damaged, or with the stream's end too early.
TEST(CMixer, ReadsWhatItWritesAndSurvivesDamage) {
    TestHost t;
    CMemoryStream inside,
        stream; // what would be taken for an item if its head were skipped alone
    inside.writeId("prog", 5);
    inside.writeStr("X");
    stream.writeId("filename", inside.getPos());
    stream.write(inside.data, inside.getPos());
    CMixer from(t.host), mixer(t.host);
    from.init();
    from.getProg(0)->sh = 5;
    from.progs.add(new CMixProg);
    from.getProg(1)->id = "Drums";
    from.curProg = 1;
    from.mxv = 3;
    from.addScene();
    from.write(&stream);
    const int size = stream.getPos();
    stream.writeInt(77); // of the next block
    const auto read = [&](int end) {
        mixer.clear();
        mixer.init();
        stream.seek(0, seekStart);
        mixer.read(&stream, end);
        EXPECT_EQ(stream.getPos(), end);
        EXPECT_LE(mixer.progs.getCount(), end / 16) << "more than has room there";
        EXPECT_TRUE(mixer.progs.empty() || mixer.getProg(-1));
    };
    for (int cut = 0; cut <= size; ++cut) read(cut);
    ASSERT_EQ(mixer.progs.getCount(), 2);
    ASSERT_EQ(mixer.scenes.getCount(), 1);
    mixer.bindScenes();
    EXPECT_EQ(mixer.sceneAt(0)->count(), from.sceneAt(0)->count());
    EXPECT_GT(mixer.sceneAt(0)->count(), 0);
    EXPECT_TRUE(mixer.mxv == 3 && mixer.getProg(0)->sh == 5 && mixer.getProg(-1)->id == "Drums");
    EXPECT_TRUE(mixer.notices.raised(CompNotice::program));
    for (int at = 0; at < size; ++at) {
        const unsigned char before = stream.data[at];
        for (const int byte : {0, 1, 0x7F, 0x80, 0xFF}) {
            stream.data[at] = static_cast<unsigned char>(byte);
            read(size);
        }
        stream.data[at] = before;
    }
    for (int left = size; left > 0; --left) {
        stream.setSize(left);
        read(size);
    }
}
