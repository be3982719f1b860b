#include "engine/CMixer.h"
#include "base/CStream.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace {

/// A stored mixer with two programs, behind an item of another version.
struct Stored : TestHost {
    CMixer mixer{host};
    CMemoryStream stream;
    int size;

    Stored() {
        CMemoryStream inside; // what would be taken for an item if its head were skipped alone
        inside.writeId("prog", 5);
        inside.writeStr("X");
        stream.writeId("filename", inside.getPos());
        stream.write(inside.data, inside.getPos());
        CMixer from(host);
        from.init();
        from.getProg(0)->sh = 5;
        from.progs.add(new CMixProg);
        from.getProg(1)->id = "Drums";
        from.curProg = 1;
        from.mxv = 3;
        from.write(&stream);
        size = stream.getPos();
        stream.writeInt(77); // of the next block
    }
    /// Reads it into a mixer that holds something else.
    void read(int end) {
        mixer.clear();
        mixer.init();
        stream.seek(0, seekStart);
        mixer.read(&stream, end);
        EXPECT_EQ(stream.getPos(), end);
        EXPECT_LE(mixer.progs.getCount(), end / 16) << "more than has room there";
        EXPECT_TRUE(mixer.progs.empty() || mixer.getProg(-1));
    }
};

} // namespace

TEST(CMixer, ReadsWhatItWritesUpToAnyCut) {
    Stored s;
    for (int cut = 0; cut <= s.size; ++cut) s.read(cut);
    EXPECT_EQ(s.mixer.mxv, 3);
    ASSERT_EQ(s.mixer.progs.getCount(), 2);
    EXPECT_EQ(s.mixer.getProg(0)->sh, 5);
    EXPECT_STREQ(s.mixer.getProg(0)->id.asChar(), "program");
    EXPECT_STREQ(s.mixer.getProg(-1)->id.asChar(), "Drums");
    EXPECT_EQ(s.mixer.getProg(-1)->sh, 31);
    EXPECT_TRUE(s.mixer.updateFlags & updateProgram);
}

TEST(CMixer, SurvivesAnyByteAndAnEarlyEnd) {
    Stored s;
    for (int at = 0; at < s.size; ++at) {
        const unsigned char before = s.stream.data[at];
        for (const int byte : {0, 1, 0x7F, 0x80, 0xFF}) {
            s.stream.data[at] = static_cast<unsigned char>(byte);
            s.read(s.size);
        }
        s.stream.data[at] = before;
    }
    for (int left = s.size; left > 0; --left) {
        s.stream.setSize(left);
        s.read(s.size);
    }
}
