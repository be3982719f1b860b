#include "project/ProjectFixture.h"

#include "instruments/CSampler.h"

/// What fits into the memory while it is made has room when it is read: 220 instruments with all
/// their factory sounds.
TEST(BigProject, ComesBackWhole) {
    constexpr int instruments = 220;
    ProjectFixture f;
    const int before = f.host->comps.getCount();
    for (int i = 0; i < instruments; ++i) {
        auto* sampler = new CSampler(f.host);
        sampler->init();
        f.host->comps.add(sampler);
    }
    const int programs = f.comp(before)->progs.getCount();
    const std::string bytes = f.save();
    ASSERT_EQ(f.load(bytes), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    ASSERT_EQ(f.host->comps.getCount(), before + instruments);
    for (int i = before; i < before + instruments; ++i)
        ASSERT_EQ(f.comp(i)->progs.getCount(), programs) << i;
    EXPECT_TRUE(f.save() == bytes);
}
