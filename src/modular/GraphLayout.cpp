#include "modular/GraphLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int orderSweeps = 12, placeSweeps = 8;
constexpr double bendWidth = 12; ///< that a cable takes in a row which it passes

/// Finds what closes a loop as depth-first search meets it: a cable to a box on its own path.
class LoopSearch {
public:
    explicit LoopSearch(const LayoutGraph& g)
        : graph(g), out(g.boxes.size()), state(g.boxes.size(), fresh), loops(g.cables.size()) {
        for (size_t i = 0; i < g.cables.size(); i++) out[size_t(g.cables[i].from)].push_back(i);
        std::vector<int> arriving(g.boxes.size(), 0);
        for (const auto& cable : g.cables) arriving[size_t(cable.to)]++;
        for (size_t box = 0; box < g.boxes.size(); box++)
            if (arriving[box] == 0) visit(box);
        for (size_t box = 0; box < g.boxes.size(); box++) visit(box);
    }
    std::vector<bool> take() { return std::move(loops); }

private:
    enum State { fresh, open, done };
    struct Place {
        size_t box, next;
    };

    void visit(size_t first) {
        if (state[first] != fresh) return;
        std::vector<Place> path{{first, 0}};
        state[first] = open;
        while (!path.empty()) {
            Place& top = path.back();
            if (top.next == out[top.box].size()) {
                state[top.box] = done;
                path.pop_back();
                continue;
            }
            const size_t cable = out[top.box][top.next++];
            const auto to = size_t(graph.cables[cable].to);
            if (state[to] == open) loops[cable] = true;
            if (state[to] != fresh) continue;
            state[to] = open;
            path.push_back({to, 0});
        }
    }

    const LayoutGraph& graph;
    std::vector<std::vector<size_t>> out;
    std::vector<State> state;
    std::vector<bool> loops;
};

/// Something in a row: a box, or the place where a longer cable passes.
struct Node {
    int box = -1; ///< -1 for a passing cable
    int row = 0;
    double width = 0, x = 0; ///< `x` is its left edge
};

/// A piece of a cable from a node to one of the next row.
struct Piece {
    int from, to;      ///< nodes
    double fromX, toX; ///< from their left edges
};

class Layers {
public:
    Layers(const LayoutGraph& g, const LayoutGaps& space) : graph(g), gaps(space) {
        findRows();
        addNodes();
        joinPieces();
    }
    void order();
    void place();
    std::vector<CPoint> places() const;

private:
    void findRows();
    void pullDown(const std::vector<bool>& loops);
    void addNodes();
    void joinPieces();
    int addNode(int box, int row, double width);
    void numberRow(int row);
    void sortRow(int row, bool fromAbove);
    int64_t crossings() const;
    int64_t crossingsBelow(int row) const;
    void alignRow(int row, bool fromAbove);
    double centreOf(int node, bool fromAbove, double& weight) const;
    double gapBetween(const Node& a, const Node& b) const {
        return a.box < 0 && b.box < 0 ? 2 : gaps.beside;
    }

    const LayoutGraph& graph;
    const LayoutGaps gaps;
    std::vector<bool> cabled; ///< by box
    std::vector<int> rowOf;   ///< by box
    std::vector<Node> nodes;
    std::vector<int> nodeOf; ///< by box, -1 without cables
    std::vector<Piece> pieces;
    std::vector<std::vector<int>> above, below; ///< pieces of each node
    std::vector<std::vector<int>> rows;         ///< nodes from left to right
    std::vector<int> rank;                      ///< of a node in its row
};

void Layers::findRows() {
    const std::vector<bool> loops = loopCables(graph);
    const size_t count = graph.boxes.size();
    cabled.assign(count, false);
    rowOf.assign(count, 0);
    std::vector<int> waits(count, 0);
    std::vector<std::vector<int>> out(count);
    for (size_t i = 0; i < graph.cables.size(); i++) {
        const auto& cable = graph.cables[i];
        cabled[size_t(cable.from)] = cabled[size_t(cable.to)] = true;
        if (loops[i]) continue;
        waits[size_t(cable.to)]++;
        out[size_t(cable.from)].push_back(cable.to);
    }
    std::vector<int> ready;
    for (size_t box = 0; box < count; box++)
        if (waits[box] == 0) ready.push_back(int(box));
    for (size_t next = 0; next < ready.size(); next++) {
        const int box = ready[next];
        for (const int to : out[size_t(box)]) {
            rowOf[size_t(to)] = std::max(rowOf[size_t(to)], rowOf[size_t(box)] + 1);
            if (--waits[size_t(to)] == 0) ready.push_back(to);
        }
    }
    pullDown(loops);
}

/// What nothing feeds stands just above what it feeds.
void Layers::pullDown(const std::vector<bool>& loops) {
    std::vector<bool> fed(graph.boxes.size(), false);
    std::vector<int> nearest(graph.boxes.size(), -1);
    for (size_t i = 0; i < graph.cables.size(); i++) {
        const auto& cable = graph.cables[i];
        if (loops[i]) continue;
        fed[size_t(cable.to)] = true;
        int& row = nearest[size_t(cable.from)];
        const int to = rowOf[size_t(cable.to)];
        row = row < 0 ? to : std::min(row, to);
    }
    for (size_t box = 0; box < rowOf.size(); box++)
        if (!fed[box] && nearest[box] > 0) rowOf[box] = nearest[box] - 1;
}

int Layers::addNode(int box, int row, double width) {
    nodes.push_back({box, row, width});
    if (int(rows.size()) <= row) rows.resize(size_t(row) + 1);
    rows[size_t(row)].push_back(int(nodes.size()) - 1);
    return int(nodes.size()) - 1;
}

void Layers::addNodes() {
    nodeOf.assign(graph.boxes.size(), -1);
    for (size_t box = 0; box < graph.boxes.size(); box++)
        if (cabled[box]) nodeOf[box] = addNode(int(box), rowOf[box], graph.boxes[box].width);
}

/// Cables that lead up, or stay in a row, are laid as if they led down.
void Layers::joinPieces() {
    for (const auto& cable : graph.cables) {
        if (cable.from == cable.to) continue;
        int from = nodeOf[size_t(cable.from)], to = nodeOf[size_t(cable.to)];
        double fromX = cable.fromX, toX = cable.toX;
        if (nodes[size_t(from)].row > nodes[size_t(to)].row) {
            std::swap(from, to);
            std::swap(fromX, toX);
        }
        const int last = nodes[size_t(to)].row;
        if (nodes[size_t(from)].row == last) continue;
        for (int row = nodes[size_t(from)].row + 1; row < last; row++) {
            const int bend = addNode(-1, row, bendWidth);
            pieces.push_back({from, bend, fromX, bendWidth / 2});
            from = bend;
            fromX = bendWidth / 2;
        }
        pieces.push_back({from, to, fromX, toX});
    }
    above.resize(nodes.size());
    below.resize(nodes.size());
    for (size_t i = 0; i < pieces.size(); i++) {
        below[size_t(pieces[i].from)].push_back(int(i));
        above[size_t(pieces[i].to)].push_back(int(i));
    }
}

// The order in the rows.

void Layers::numberRow(int row) {
    rank.resize(nodes.size());
    int at = 0;
    for (const int node : rows[size_t(row)]) rank[size_t(node)] = at++;
}

/// By the mean of what each is cabled to; a port further to the right counts for a little more.
void Layers::sortRow(int row, bool fromAbove) {
    std::vector<std::pair<double, int>> keyed;
    for (const int node : rows[size_t(row)]) {
        const auto& list = fromAbove ? above[size_t(node)] : below[size_t(node)];
        double sum = 0;
        for (const int i : list) {
            const Piece& p = pieces[size_t(i)];
            const int other = fromAbove ? p.from : p.to;
            const double x = fromAbove ? p.fromX : p.toX;
            sum += rank[size_t(other)] + x / (nodes[size_t(other)].width + 1);
        }
        keyed.emplace_back(list.empty() ? rank[size_t(node)] + 0.5 : sum / double(list.size()),
                           node);
    }
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::transform(keyed.begin(), keyed.end(), rows[size_t(row)].begin(),
                   [](const auto& k) { return k.second; });
    numberRow(row);
}

/// Pairs that are out of order, counted by a tree of sums.
int64_t Layers::crossingsBelow(int row) const {
    std::vector<std::pair<double, double>> ends;
    for (const int node : rows[size_t(row)])
        for (const int i : below[size_t(node)]) {
            const Piece& p = pieces[size_t(i)];
            const Node &from = nodes[size_t(p.from)], &to = nodes[size_t(p.to)];
            ends.emplace_back(rank[size_t(p.from)] + p.fromX / (from.width + 1),
                              rank[size_t(p.to)] + p.toX / (to.width + 1));
        }
    std::sort(ends.begin(), ends.end());
    std::vector<double> sorted;
    sorted.reserve(ends.size());
    for (const auto& end : ends) sorted.push_back(end.second);
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    std::vector<int> sums(sorted.size() + 1, 0);
    int64_t count = 0;
    for (size_t i = 0; i < ends.size(); i++) {
        const auto at =
            size_t(std::lower_bound(sorted.begin(), sorted.end(), ends[i].second) - sorted.begin());
        int before = 0;
        for (size_t k = at + 1; k > 0; k -= k & (~k + 1)) before += sums[k];
        count += int64_t(i) - before;
        for (size_t k = at + 1; k < sums.size(); k += k & (~k + 1)) sums[k]++;
    }
    return count;
}

int64_t Layers::crossings() const {
    int64_t count = 0;
    for (size_t row = 0; row + 1 < rows.size(); row++) count += crossingsBelow(int(row));
    return count;
}

void Layers::order() {
    const int last = int(rows.size()) - 1;
    for (int row = 0; row <= last; row++) numberRow(row);
    auto best = rows;
    int64_t least = crossings();
    for (int sweep = 0; sweep < orderSweeps && least > 0; sweep++) {
        if (sweep % 2 == 0)
            for (int row = 1; row <= last; row++) sortRow(row, true);
        else
            for (int row = last - 1; row >= 0; row--) sortRow(row, false);
        const int64_t now = crossings();
        if (now >= least) continue;
        least = now;
        best = rows;
    }
    rows = best;
    for (int row = 0; row <= last; row++) numberRow(row);
}

// Places in the rows.

/// Where a node's cables to one side would like its left edge.
double Layers::centreOf(int node, bool fromAbove, double& weight) const {
    double sum = 0;
    const auto& list = fromAbove ? above[size_t(node)] : below[size_t(node)];
    for (const int i : list) {
        const Piece& p = pieces[size_t(i)];
        sum += fromAbove ? nodes[size_t(p.from)].x + p.fromX - p.toX
                         : nodes[size_t(p.to)].x + p.toX - p.fromX;
    }
    weight = double(list.size());
    return list.empty() ? nodes[size_t(node)].x : sum / weight;
}

/// Each node as near to its wish as the others let it: neighbours that would overlap come together
/// as a block, which stands at the mean of their wishes.
void Layers::alignRow(int row, bool fromAbove) {
    struct Block {
        double sum, weight;
        size_t first;
        double place() const { return sum / weight; }
    };
    const auto& list = rows[size_t(row)];
    std::vector<double> offsets(list.size(), 0);
    std::vector<Block> blocks;
    for (size_t i = 0; i < list.size(); i++) {
        if (i > 0) {
            const Node &a = nodes[size_t(list[i - 1])], &b = nodes[size_t(list[i])];
            offsets[i] = offsets[i - 1] + a.width + gapBetween(a, b);
        }
        double weight = 0;
        const double wish = centreOf(list[i], fromAbove, weight);
        weight = std::max(weight, 0.01);
        blocks.push_back({(wish - offsets[i]) * weight, weight, i});
        while (blocks.size() > 1 && blocks[blocks.size() - 2].place() >= blocks.back().place()) {
            const Block last = blocks.back();
            blocks.pop_back();
            blocks.back().sum += last.sum;
            blocks.back().weight += last.weight;
        }
    }
    for (size_t b = 0; b < blocks.size(); b++) {
        const size_t end = b + 1 < blocks.size() ? blocks[b + 1].first : list.size();
        for (size_t i = blocks[b].first; i < end; i++)
            nodes[size_t(list[i])].x = blocks[b].place() + offsets[i];
    }
}

void Layers::place() {
    const int last = int(rows.size()) - 1;
    for (const auto& row : rows) {
        double x = 0;
        for (size_t i = 0; i < row.size(); i++) {
            Node& node = nodes[size_t(row[i])];
            node.x = x;
            if (i + 1 < row.size()) x += node.width + gapBetween(node, nodes[size_t(row[i + 1])]);
        }
    }
    for (int sweep = 0; sweep < placeSweeps; sweep++) {
        for (int row = 1; row <= last; row++) alignRow(row, true);
        for (int row = last - 1; row >= 0; row--) alignRow(row, false);
    }
}

std::vector<CPoint> Layers::places() const {
    std::vector<CPoint> result(graph.boxes.size());
    double leftmost = 0;
    bool any = false;
    for (const Node& node : nodes)
        if (node.box >= 0 && (!any || node.x < leftmost)) leftmost = node.x, any = true;
    int y = gaps.top;
    for (const auto& row : rows) {
        int height = 0;
        for (const int i : row) {
            const Node& node = nodes[size_t(i)];
            if (node.box < 0) continue;
            height = std::max(height, graph.boxes[size_t(node.box)].height);
            result[size_t(node.box)] = {gaps.left + int(std::lround(node.x - leftmost)), y};
        }
        y += height + gaps.between;
    }
    int x = gaps.left, height = 0;
    for (size_t box = 0; box < graph.boxes.size(); box++) {
        if (cabled[box]) continue;
        const auto& size = graph.boxes[box];
        if (x > gaps.left && x + size.width > gaps.left + gaps.mostWidth) {
            x = gaps.left;
            y += height + gaps.between;
            height = 0;
        }
        result[box] = {x, y};
        x += size.width + gaps.beside;
        height = std::max(height, size.height);
    }
    return result;
}

double side(CPoint a, CPoint b, CPoint p) {
    return double(b.x - a.x) * (p.y - a.y) - double(b.y - a.y) * (p.x - a.x);
}

} // namespace

std::vector<bool> loopCables(const LayoutGraph& graph) {
    return LoopSearch(graph).take();
}

std::vector<CPoint> layGraph(const LayoutGraph& graph, const LayoutGaps& gaps) {
    Layers layers(graph, gaps);
    layers.order();
    layers.place();
    return layers.places();
}

int countCrossings(const LayoutGraph& graph, const std::vector<CPoint>& places) {
    struct Line {
        CPoint a, b;
    };
    std::vector<Line> lines;
    for (const auto& cable : graph.cables) {
        const CPoint from = places[size_t(cable.from)], to = places[size_t(cable.to)];
        const int bottom = from.y + graph.boxes[size_t(cable.from)].height;
        lines.push_back({{from.x + cable.fromX, bottom}, {to.x + cable.toX, to.y}});
    }
    int count = 0;
    for (size_t i = 0; i < lines.size(); i++)
        for (size_t k = 0; k < i; k++) {
            const Line &l = lines[i], &m = lines[k];
            const bool apart = side(l.a, l.b, m.a) * side(l.a, l.b, m.b) < 0;
            count += apart && side(m.a, m.b, l.a) * side(m.a, m.b, l.b) < 0;
        }
    return count;
}
