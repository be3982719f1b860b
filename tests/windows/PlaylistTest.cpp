#include "MainFixture.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "browser/mapper/CFileMapperWin.h"
#include "browser/mapper/CXML.h"
#include "gui/Selections.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "shell/Rooms.h"
#include "support/Rows.h"
#include "support/Told.h"

#include <filesystem>
#include <fstream>

namespace {

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

/// All elements with their texts, and the number of lines that tell of faults.
std::string decoded(const std::string& text) {
    CMemoryStream stream;
    stream.write(text.data(), int(text.size()));
    CXML xml;
    xml.decodeStream(&stream);
    std::string told;
    const std::function<void(const CXMLNode*)> tell = [&](const CXMLNode* node) {
        for (const auto* child : node->children) {
            told += std::string(child->id.asChar()) + "=" + child->value.asChar() + "(";
            tell(child);
            told += ")";
        }
    };
    tell(xml.root.get());
    for (int i = 0; i < xml.lines->count(); i++)
        if (xml.lines->get(i).pos("xml decode error") == 0) told += "!";
    return told;
}

class PlaylistTest : public MainWinTest {
protected:
    void begin() {
        std::filesystem::create_directories(at("filemaps"));
        start();
        ASSERT_TRUE(load(kindEmpty));
        key("ctrl+shift+l");
        ASSERT_TRUE(pumpUntil([this] { return mapper().getEnabled(); }));
    }
    CFileMapper& mapper() { return win->rooms->playlist.mapper; }
    CFileMapperWin* list() { return mapper().win; }
    std::string project(const char* name) {
        host->projectFile = folder.write(name, "");
        EXPECT_TRUE(win->flows->saveClicked());
        return at(name);
    }
    std::string written() {
        std::ifstream in(mapper().mapFile.asChar());
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string projects() {
        std::string all;
        for (int i = 0; i < mapper().numProjects(); i++)
            all += std::filesystem::path(mapper().getProject(i).asChar()).filename().string() + " ";
        return all;
    }
    void click(const char* id) {
        for (auto* c : list()->clientGroup->controls)
            if (c->id == id) return static_cast<void>(c->pressPart(CCtrl::wholeCtrl));
        FAIL() << id;
    }
    void drop(const std::string& path) {
        app->startDrag(nullptr);
        auto* item = new CDropItem("", dropFile);
        item->path = path.c_str();
        app->dragList->add(item);
        list()->dropAt(50, 100, modLeft);
        app->endDrag();
    }
};

} // namespace

/// What the states of the reader make of good, odd and broken files.
TEST(CXML, ReadsByteByByte) {
    std::string deep = head;
    for (int i = 0; i < 400; i++) deep += "<a>";
    for (const auto& [text, told] : Rows<std::string, std::string>{
             {head + "<p>\r\n<a>1</a><b x=\"2\">t w\t</b></p>", "p=(a=1()b=t w())"},
             {head + "<p><a>&apos;x&apos;&amp;</a></p>", "p=(a=\"x\"&amp;())"},
             {"<p><a>1</a></p>", "a=1()!"},
             {head + "<a/><b>1</b>", "a/=(b=1())"},
             {head + "<a>x > y</a>", "a= y()"},
             {head + "<p>text<a>1</a></p>", "p=(a=1())"},
             {head + "<a><![CDATA[1]]></a>", "a=1()"},
             {head + "</></a>", "!!"},
             {head + "<?other?><a>1</a>", "a=1()"},
             {"", ""}})
        EXPECT_EQ(decoded(text), told) << text;
    EXPECT_EQ(decoded(deep).size(), 256 * 4u);
}

/// What is told of a file is bounded, however much there is to tell.
TEST(CXML, TellsNoMoreThanItMay) {
    CMemoryStream stream;
    std::string text = head + "<a>" + std::string(600, 'x') + "</a>";
    for (int i = 0; i < 2000; i++) text += "</b>";
    stream.write(text.data(), int(text.size()));
    CXML xml;
    xml.decodeStream(&stream);
    EXPECT_EQ(xml.lines->count(), 1000);
    EXPECT_EQ(xml.lines->get(1).length(), 512);
    EXPECT_EQ(xml.getNode("A")->value.length(), 600);
}

/// Names and paths that a list could not give back are refused; an apostrophe alone is none.
TEST(CFileMapper, KnowsWhatItCanKeep) {
    for (const auto& [name, path, map] :
         Rows<std::string, bool, bool>{{"gig", true, true},
                                       {"J\xc3\xb6rg's & co", true, true},
                                       {"", true, false},
                                       {".hidden", true, false},
                                       {"a/b", true, false},
                                       {"a\\b", true, false},
                                       {"a<b", false, false},
                                       {"a>b", false, false},
                                       {"a&apos;b", false, false},
                                       {"a\nb", false, false},
                                       {"a\x01"
                                        "b",
                                        false, false}}) {
        EXPECT_EQ(CFileMapper::canStore(name.c_str()), path) << name;
        EXPECT_EQ(CFileMapper::canNameMap(name.c_str()), map) << name;
    }
}

/// A list is made, filled, ordered and kept, each step at once in its file.
TEST_F(PlaylistTest, ListsAreKept) {
    begin();
    const std::string a = project("a.qv"), b = project("b.qv");
    drop(a);
    EXPECT_EQ(mapper().getFilemap(-1), "Playlist") << "the first project makes the first list";
    EXPECT_EQ(projects(), "a.qv ");
    ASSERT_TRUE(mapper().newMap("gig"));
    list()->setCurrentMap(1);
    EXPECT_EQ(setting("file mapper", "map"), "gig");
    drop(a);
    drop(b);
    EXPECT_EQ(written(), head + "\r\n<projectList>\r\n<project>" + a + "</project>\r\n<project>" +
                             b + "</project>\r\n</projectList>");
    EXPECT_STREQ(list()->projectsList->row(1)->id.asChar(), "02 - b.qv");
    list()->projectsList->setIndex(1);
    mapper().setProgram(1, false);
    click("up");
    EXPECT_EQ(projects(), "b.qv a.qv ");
    EXPECT_EQ(list()->projectsList->index, 0) << "the choice goes along";
    click("up");
    EXPECT_EQ(projects(), "b.qv a.qv ");
    click("down");
    EXPECT_EQ(projects(), "a.qv b.qv ");
    EXPECT_TRUE(mapper().newMap("gig")) << "chooses the one that is there";
    EXPECT_EQ(projects(), "a.qv b.qv ");
    const CFileMapper again;
    EXPECT_EQ(again.getFilemap(-1), "gig");
    EXPECT_EQ(again.numProjects(), 2);
    list()->projectsList->setIndex(0);
    click("remove");
    EXPECT_EQ(projects(), "b.qv ");
    const Told told;
    drop(at("x<y.qv"));
    EXPECT_EQ(projects(), "b.qv ");
    EXPECT_EQ(Told::messages.size(), 1u);
    for (const int outside : {-1, 2}) mapper().setFilemap(outside);
    EXPECT_EQ(mapper().getFilemap(-1), "gig");
    std::filesystem::remove(mapper().mapFile.asChar());
    mapper().saveMap();
    EXPECT_FALSE(std::filesystem::exists(mapper().mapFile.asChar()));
    mapper().deleteMap(1);
    EXPECT_EQ(mapper().getIndex(), 0);
    mapper().deleteMap(0);
    EXPECT_EQ(mapper().getIndex(), -1);
    EXPECT_EQ(mapper().numProjects(), 0);
}

/// A program change opens the project at its place as long as the list shows; one that cannot be
/// opened is asked for once.
TEST_F(PlaylistTest, ProgramChangesOpenProjects) {
    begin();
    const std::string a = project("a.qv"), b = project("b.qv");
    mapper().newMap("gig");
    for (const std::string& path : {a, b}) mapper().addProject(path.c_str());
    const auto opens = [this](int program, const std::string& path) {
        host->requestedProgram = program;
        return pumpUntil(
            [&] { return host->projectFile == path.c_str() && mapper().getPlayNext().empty(); });
    };
    EXPECT_TRUE(opens(1, b));
    EXPECT_TRUE(opens(0, a));
    EXPECT_TRUE(opens(7, a)) << "beyond the list";
    EXPECT_EQ(mapper().getProgram(), 0);
    mapper().addProject(folder.write("bad.qv", "nothing"));
    host->requestedProgram = 2;
    EXPECT_TRUE(
        pumpUntil([this] { return mapper().getProgram() == 2 && mapper().getPlayNext().empty(); }));
    EXPECT_EQ(host->projectFile, a.c_str());
    mapper().setPlayNext(at("gone.qv").c_str());
    EXPECT_TRUE(mapper().getPlayNext().empty()) << "there is no such file";
    const std::string fleeting = project("fleeting.qv");
    ASSERT_TRUE(opens(0, a));
    mapper().setPlayNext(fleeting.c_str());
    std::filesystem::remove(fleeting);
    for (int i = 0; i < 10; i++) win->idle();
    EXPECT_STREQ(mapper().getPlayNext().asChar(), fleeting.c_str()) << "it waits, and does no harm";
    EXPECT_EQ(host->projectFile, a.c_str());
    EXPECT_TRUE(opens(1, b));
    key("ctrl+shift+l");
    ASSERT_TRUE(pumpUntil([this] { return !mapper().getEnabled(); }));
    host->requestedProgram = 0;
    EXPECT_TRUE(pumpUntil([this] { return host->requestedProgram == -1; }));
    EXPECT_TRUE(mapper().getPlayNext().empty());
}
