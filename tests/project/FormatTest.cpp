#include "project/ProjectFixture.h"
#include "support/Places.h"

#include "common/fx/CEQ.h"
#include "engine/CGroupCh.h"

#include <fstream>
#include <sstream>

namespace {

/// The bytes of one word of foreign.txt, which tells how they are written.
std::string bytesOf(const std::string& word) {
    const std::string rest = word.substr(1);
    std::string raw;
    for (size_t i = 1; word[0] == 'x' && i < word.size(); i += 2)
        raw += char(std::stoi(word.substr(i, 2), nullptr, 16));
    switch (word[0]) {
    case 'x':
        return raw;
    case '_':
        return std::string(std::stoul(rest), '\0');
    case '\'':
        return {char(std::stoi(rest))};
    case '"':
        return qvf::text(rest.substr(0, rest.size() - 1));
    default:
        if (word.back() == 'f') return qvf::real(std::stof(word));
        return qvf::number(std::stoi(word)).substr(0, word.back() == 'h' ? 2 : 4);
    }
}

std::string itemsOf(const std::vector<std::string>& lines, size_t& at, size_t indent = 0) {
    std::string items;
    while (at < lines.size() && lines[at].find_first_not_of(' ') == indent) {
        std::istringstream words(lines[at++]);
        std::string name, word, content;
        words >> name;
        while (words >> word) content += bytesOf(word);
        content += itemsOf(lines, at, indent + 2);
        const size_t told = name.find('=');
        items += told == std::string::npos
                     ? qvf::item(name, content)
                     : qvf::head(name.substr(0, told), std::stoi(name.substr(told + 1))) + content;
    }
    return items;
}

constexpr int level = 0x2000, levelFrames = 8; ///< of the sample: a quarter of full scale

/// The file that foreign.txt describes.
std::string project() {
    std::ifstream text(sourceFile("tests/project/foreign.txt"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        if (line[0] != '#') lines.push_back(line);
    size_t at = 0;
    const std::string items = itemsOf(lines, at);
    EXPECT_TRUE(at > 100 && at == lines.size()) << "line " << at << " is too far in";
    return qvf::file(items);
}

} // namespace

/// Where in the graph the values of a file by the tables alone arrive; and it comes back as it was.
TEST(Format, AForeignFileArrivesAndComesBack) {
    ProjectFixture f;
    ASSERT_EQ(f.load(project()), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    const std::string saved = f.save(), file = project();
    const auto same =
        std::mismatch(saved.begin(), saved.end(), file.begin(), file.end()).first - saved.begin();
    EXPECT_TRUE(saved == file) << same << " bytes, up to "
                               << testing::PrintToString(
                                      saved.substr(size_t(std::max(0L, same - 40)), 40));

    CQV* host = f.host;
    EXPECT_TRUE(host->loop == 0 && host->audioFolder == "tune_audio" && host->id == "Host");
    EXPECT_TRUE(host->editorStruct.maximized == 1 && host->editorStruct.pageItem == 9);
    ASSERT_EQ(host->samples.getCount(), 2);
    const auto *missing = host->samples.items(0), *tone = host->samples.items(1);
    EXPECT_TRUE(tone->frames == levelFrames && tone->fixedPitch && tone->data[1] == 0x20);
    EXPECT_TRUE(!missing->valid && missing->streamed && missing->bits == 24);
    EXPECT_EQ(tone->marks, (std::vector<int>{30, 500}));

    CComp* group = f.comp(3);
    EXPECT_TRUE(group->posX == 7 && group->hideChs == 1 && group->listKind == listComps);
    COutputChannel* ch = group->output();
    EXPECT_TRUE(ch->channels == 1 && ch->gain == 0.0f) << "muted";
    EXPECT_TRUE(ch->vol == 0.25f && ch->pan == -0.5f && ch->panL == 1.25f);
    EXPECT_TRUE(ch->trim == 0.75f && ch->trimAux == 2.0f && ch->solo == 0 && ch->mute == 1);
    EXPECT_TRUE(ch->showFader == 0 && ch->showExtra == 1 && ch->sections[3] == 5);
    EXPECT_TRUE(ch->eq[3]->getFrequency() == 4000.0f && ch->eq[3]->active == 1);
    EXPECT_TRUE(ch->eq[3]->filterType == 2 && ch->eq[3]->state[1] == -1);
    EXPECT_EQ(ch->sendLevels[0]->level, 0.25f);
    auto* insert = ch->inserts.items(1);
    EXPECT_TRUE(insert->enabled == 0 && insert->wet == 0.25f && insert->editorStruct.left == 9);
    EXPECT_TRUE(insert->ownerChannel == ch && insert->output()->comp == insert);

    EXPECT_TRUE(f.mixer.mxv == 5 && host->mapStruct.height == 8);
    EXPECT_TRUE(host->ctrlStart == 20 && host->ctrlRecord == 23 && host->ctrlTempo == 24);
    auto* maps = host->maps.first();
    EXPECT_TRUE(maps->name == "Live" && maps->value == 3);
    const auto* bus = static_cast<CComp*>(host->sends.first());
    const CObject* targets[] = {group, bus, insert, f.comp(2)->output(1), ch->sendLevels[0]};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(maps->items.items(i)->target.load(), targets[i]) << i;
    const auto* map = maps->items.items(2);
    EXPECT_TRUE(map->owner.load() == ch && map->comp.load() == group);
    EXPECT_TRUE(map->ch == 2 && map->param == -2 && map->cc == 76 && map->max == 127);
    EXPECT_TRUE(f.ui.windows.pages.size() == 1 && f.ui.windows.sidebar[1] == 180);
}

TEST(Format, AForeignFilePlays) {
    ProjectFixture f;
    ASSERT_EQ(f.load(project()), LoadResult::good);
    f.device.out = static_cast<CAudioOut*>(f.host->getAudioOut());
    f.device.forget();
    f.host->start();
    f.device.run(12);
    constexpr int beat = 44100 / 4; // at 240 beats a minute
    constexpr float throughBus = 0.5f * 0.5f, tone = float(level) / 32768 * (1 + throughBus);
    for (int i = 0; i < beat + 500; i++) {
        const int after = i - beat - (levelFrames - 1); // the last frame runs out slowly
        const double wanted = i < beat ? 0.0 : double(tone) * std::pow(0.999, std::max(after, 0));
        ASSERT_NEAR(f.device.left[size_t(i)], wanted, 1e-5) << i;
    }
    // Ticks 480 and, as a note ends one tick early, 480 + 240 - 1.
    ASSERT_EQ(f.device.sent.size(), 2u);
    EXPECT_EQ(f.device.sent[0].data, 0x643C90);
    EXPECT_NEAR(f.device.sent[0].frame, 480 * beat / 960.0 - 5 * 1024, 0.5);
    EXPECT_EQ(f.device.sent[1].data, 0x003C90);
    EXPECT_NEAR(f.device.sent[1].frame, 719 * beat / 960.0 - 8 * 1024, 0.5);
}

/// Wherever a file was cut off, what stands in front of that is there; an item that was cut itself
/// is told, and leaves an empty project that works. A head that was cut is told as well.
TEST(Format, EveryCutIsTold) {
    ProjectFixture f;
    const std::string file = project();
    constexpr size_t magic = 7, step = 5;
    size_t end = magic, content = magic, start = magic;
    for (size_t cut = magic; cut <= file.size(); cut += step) {
        for (; end < cut; end = content + qvf::numberAt(file, content - 4)) {
            start = end;
            content = end + qvf::numberAt(file, end) + 8;
        }
        shown.clear();
        const bool torn = cut >= content && cut < end;
        ASSERT_EQ(f.load(file.substr(0, cut)), torn ? LoadResult::abandoned : LoadResult::good)
            << cut;
        ASSERT_EQ(shown.size(), cut > start && cut < end ? 1u : 0u) << cut;
        if (torn) f.expectEmptyProject();
        f.device.run(1);
    }
}
