#include "modular/GraphLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

LayoutGraph graphOf(int boxes, std::initializer_list<std::pair<int, int>> cables) {
    LayoutGraph graph;
    graph.boxes.assign(size_t(boxes), {144, 40});
    for (const auto& [from, to] : cables) graph.cables.push_back({from, to, 4, 4});
    return graph;
}

/// Random cables, mostly forwards.
LayoutGraph randomGraph(unsigned seed, int boxes, int cables) {
    std::mt19937 random(seed);
    LayoutGraph graph;
    for (int i = 0; i < boxes; i++) graph.boxes.push_back({100 + int(random() % 200), 40});
    for (int i = 0; i < cables; i++) {
        int from = int(random() % unsigned(boxes)), to = int(random() % unsigned(boxes));
        if (from > to && random() % 20) std::swap(from, to);
        graph.cables.push_back({from, to, int(random() % 90), int(random() % 90)});
    }
    return graph;
}

TEST(GraphLayout, LeadsCablesDownAndLeavesGaps) {
    for (unsigned seed = 1; seed <= 20; seed++) {
        const LayoutGraph graph = randomGraph(seed, 40, 60);
        const LayoutGaps gaps;
        const std::vector<CPoint> places = layGraph(graph, gaps);
        ASSERT_EQ(places.size(), graph.boxes.size());
        EXPECT_EQ(places, layGraph(graph, gaps)) << "the same again";
        const std::vector<bool> loops = loopCables(graph);
        for (size_t i = 0; i < graph.cables.size(); i++) {
            const auto& cable = graph.cables[i];
            if (loops[i]) continue;
            EXPECT_LT(places[size_t(cable.from)].y, places[size_t(cable.to)].y)
                << "graph " << seed << ", cable " << i;
        }
        for (size_t a = 0; a < places.size(); a++) {
            EXPECT_TRUE(places[a].x >= gaps.left && places[a].y >= gaps.top);
            for (size_t b = 0; b < a; b++) {
                const bool beside =
                    places[a].x + graph.boxes[a].width + gaps.beside - 1 <= places[b].x ||
                    places[b].x + graph.boxes[b].width + gaps.beside - 1 <= places[a].x;
                EXPECT_TRUE(beside || places[a].y != places[b].y)
                    << "graph " << seed << ", boxes " << a << ", " << b;
            }
        }
    }
}

TEST(GraphLayout, FindsWhatClosesLoops) {
    struct Case {
        LayoutGraph graph;
        std::vector<bool> loops;
    };
    const Case cases[] = {
        {graphOf(3, {{0, 1}, {1, 2}}), {false, false}},
        {graphOf(3, {{0, 1}, {1, 2}, {2, 1}}), {false, false, true}},
        {graphOf(2, {{0, 1}, {1, 0}}), {false, true}},
        {graphOf(1, {{0, 0}}), {true}},
        {graphOf(4, {{3, 0}, {0, 1}, {1, 2}, {2, 0}}), {false, false, false, true}},
    };
    for (const Case& c : cases) EXPECT_EQ(loopCables(c.graph), c.loops);
}

TEST(GraphLayout, UntanglesWhatCanBeUntangled) {
    // Two trees whose leaves come in mixed order, and a fan that crosses itself as it is listed.
    const LayoutGraph trees = graphOf(8, {{0, 2}, {1, 3}, {0, 4}, {1, 5}, {0, 6}, {1, 7}});
    EXPECT_EQ(countCrossings(trees, layGraph(trees)), 0);
    const LayoutGraph fan = graphOf(6, {{0, 3}, {1, 2}, {2, 5}, {3, 4}});
    EXPECT_EQ(countCrossings(fan, layGraph(fan)), 0);
    // Ports count: cables that leave from left to right arrive so.
    LayoutGraph ports = graphOf(4, {});
    ports.cables = {{0, 3, 4, 4}, {0, 2, 54, 4}, {0, 1, 104, 4}};
    EXPECT_EQ(countCrossings(ports, layGraph(ports)), 0);
}

TEST(GraphLayout, PutsWhatHasNoCablesBelow) {
    const LayoutGraph graph = graphOf(4, {{0, 1}});
    const std::vector<CPoint> places = layGraph(graph);
    for (const size_t alone : {2u, 3u}) EXPECT_GT(places[alone].y, places[1].y);
    EXPECT_EQ(places[2].y, places[3].y);
    EXPECT_TRUE(layGraph({}).empty());
}

} // namespace
