#include "plugins/scan/PluginScan.h"

#include "plugins/PluginFixture.h"

/// Every file gets its result, whatever the process that looks at it does; what is known is not
/// looked at again until its file is another one.
TEST(PluginScan, FindsOutAboutEachFile) {
    PluginFixture f;
    const struct {
        const char *name, *why;
    } cases[] = {{"gain", ""},
                 {"bad-crashes", "It crashed (Segmentation fault)."},
                 {"bad-aborts", "It crashed (Aborted)."},
                 {"bad-hangs", "It took longer than 1 second."},
                 {"bad-null", "The plug-in does not start."},
                 {"bad-prints", ""},
                 {"synth", ""}};
    std::vector<CStr> files;
    for (const auto& c : cases) files.push_back(f.file(c.name).c_str());
    const CStr cache = (f.folder + "/list.txt").c_str();
    {
        PluginList list(cache);
        PluginScan scan(list, builtFile("bin/sondrava-plugins").c_str());
        scan.limit = std::chrono::milliseconds(1000);
        scan.add(list.compare(files));
        EXPECT_EQ(scan.total(), 7);
        ASSERT_TRUE(comes([&] { return scan.poll(), !scan.busy(); }));
    }
    PluginList list(cache);
    EXPECT_EQ(list.all().size(), 7u);
    for (const auto& c : cases) {
        const PluginList::Entry* entry = list.find(f.file(c.name).c_str());
        ASSERT_TRUE(entry) << c.name;
        EXPECT_EQ(entry->why, c.why) << c.name;
    }
    EXPECT_EQ(list.usable().size(), 3u);
    const PluginFacts& facts = list.find(f.file("synth").c_str())->facts;
    EXPECT_EQ(facts.name, "synth");
    EXPECT_EQ(facts.vendor, "Test makers");
    EXPECT_TRUE(facts.instrument);
    EXPECT_EQ(facts.outputs, 2);
    EXPECT_TRUE(list.compare(files).empty());
    std::ofstream(f.file("gain"), std::ios::app) << " ";
    EXPECT_EQ(list.compare(files), std::vector<CStr>{f.file("gain").c_str()});
    files.pop_back();
    list.compare(files);
    EXPECT_EQ(list.find(f.file("synth").c_str()), nullptr) << "it is gone";
}

/// Nothing is left in the user's home by one that is only looked at; what has to find something
/// there does.
TEST(PluginScan, LeavesTheHomeClean) {
    PluginFixture f;
    const std::string former = std::getenv("HOME"), home = f.folder + "/home";
    std::filesystem::create_directory(home);
    std::ofstream(home + "/needed") << "";
    setenv("HOME", home.c_str(), 1);
    PluginList list((f.folder + "/list.txt").c_str());
    PluginScan scan(list, builtFile("bin/sondrava-plugins").c_str());
    scan.add({f.file("bad-writes-home").c_str(), f.file("bad-needs-home").c_str()});
    EXPECT_TRUE(comes([&] { return scan.poll(), !scan.busy(); }));
    setenv("HOME", former.c_str(), 1);
    EXPECT_EQ(list.usable().size(), 2u);
    EXPECT_EQ(scan.done(), 2);
    EXPECT_FALSE(std::filesystem::exists(home + "/made"));
}
