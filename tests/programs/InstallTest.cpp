#include "programs/Program.h"
#include "support/Places.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr const char* app = "share/applications/org.sondrava.Sondrava.desktop";
constexpr const char* about = "share/metainfo/org.sondrava.Sondrava.metainfo.xml";

/// The tree that an installation makes, in a place that no program was built for.
class Install : public testing::Test {
protected:
    const TempFolder folder;
    std::string file(const std::string& name) const { return folder.file("usr/" + name); }
    void SetUp() override {
        Program install({"cmake", "--install", fs::path(builtFile("")).parent_path(), "--prefix",
                         folder.file("usr")});
        ASSERT_EQ(install.wait(), 0) << install.err();
    }
};

/// All words of a text that begin so and go on with these letters, at least one.
std::set<std::string> wordsOf(const std::string& text, const std::string& begin,
                              const std::string& letters) {
    std::set<std::string> found;
    for (size_t at = 0; (at = text.find(begin, at)) != std::string::npos;) {
        const size_t behind = at + begin.size(), end = text.find_first_not_of(letters, behind);
        if (end != behind) found.insert(text.substr(at, end - at));
        at = std::min(end, text.size());
    }
    return found;
}

const std::string lowLetters = "abcdefghijklmnopqrstuvwxyz";

/// The long options that a text speaks of; a page of the manual writes dashes behind backslashes.
std::set<std::string> optionsOf(std::string text) {
    std::erase(text, '\\');
    return wordsOf(text, "--", lowLetters);
}

} // namespace

/// The link that a user starts finds what lies beside the program that it leads to.
TEST_F(Install, RendersFromAnyPlace) {
    const std::string out = folder.file("out.wav"), song = folder.file("song.mid");
    Program demo({file("bin/sondrava-render"), "--demo", "--length", "3840", out, "--save",
                  folder.file("song.qv")});
    EXPECT_EQ(demo.wait(), 0) << demo.err();
    EXPECT_GT(Wav(out).peak, 0.01);
    std::set<std::string> missing;
    for (const char* name : {"sondrava", "sondrava-plugins", "libaam.so", "libaccess.so",
                             "libaccess-status.so", "default.qvl", "sounds"})
        if (!fs::exists(fs::canonical(file("bin/sondrava-render")).parent_path() / name))
            missing.insert(name);
    EXPECT_EQ(missing, std::set<std::string>());
    for (const auto& entry : fs::recursive_directory_iterator(folder.file("usr"))) {
        const auto rights = entry.status().permissions();
        EXPECT_EQ(rights & fs::perms::others_write, fs::perms::none) << entry;
        EXPECT_NE(rights & fs::perms::others_read, fs::perms::none) << entry;
    }
}

/// What desktops read is as they want it, and names things that are there.
TEST_F(Install, TellsDesktopsOfTheProgram) {
    Program entry({"desktop-file-validate", file(app)});
    EXPECT_EQ(entry.wait(), 0) << entry.out();
    Program component({"appstreamcli", "validate", "--no-net", file(about)});
    EXPECT_EQ(component.wait(), 0) << component.out();
    Program types({"update-mime-database", file("share/mime")});
    EXPECT_EQ(types.wait(), 0) << types.err();
    const std::string globs = contentOf(file("share/mime/globs2")), text = contentOf(file(app));
    EXPECT_NE(globs.find("application/x-sondrava-project:*.qv\n"), std::string::npos);
    for (const std::string& type : wordsOf(text, "application/x-", lowLetters + "-"))
        EXPECT_NE(globs.find(type + ":*."), std::string::npos) << type;
    EXPECT_TRUE(fs::exists(file("share/icons/hicolor/scalable/apps/org.sondrava.Sondrava.svg")));
    EXPECT_NE(text.find("\nExec=sondrava %F\n"), std::string::npos);
}

/// The manual page tells every option that the program takes, and no other.
TEST_F(Install, HasTheOptionsInTheManualPage) {
    Program help({file("bin/sondrava-render")});
    EXPECT_EQ(help.wait(), 1);
    EXPECT_GT(optionsOf(help.err()).size(), 8u) << help.err();
    EXPECT_EQ(optionsOf(contentOf(file("share/man/man1/sondrava-render.1"))),
              optionsOf(help.err()));
}
