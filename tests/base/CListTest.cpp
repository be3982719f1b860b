#include "base/CList.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

namespace {

using Model = std::vector<int*>;

Model contents(const CList& list) {
    Model all;
    for (int* p : each<int>(list)) all.push_back(p);
    return all;
}

} // namespace

/// Whatever is done to a list, its chain, count and tail agree with an array to which the same is
/// done.
TEST(CList, AgreesWithAnArray) {
    std::mt19937 random(1);
    int values[8];
    CList list, other;
    Model model, otherModel;
    for (int step = 0; step < 20000; ++step) {
        int* p = &values[random() % 8];
        const int i = int(random() % 12) - 2, size = int(model.size());
        const bool inside = i >= 0 && i < size;
        const auto at = std::find(model.begin(), model.end(), p);
        const auto atOther = std::find(otherModel.begin(), otherModel.end(), p);
        ASSERT_EQ(list.indexed(p), at == model.end() ? -1 : int(at - model.begin()));
        ASSERT_EQ(list.next(p), model.end() - at > 1 ? *(at + 1) : nullptr);
        ASSERT_EQ(list.items(i), inside ? model[size_t(i)] : nullptr);
        switch (random() % 7) {
        case 0:
            list.add(p);
            model.push_back(p);
            break;
        case 1:
            list.insert(i, p);
            model.insert(model.begin() + std::clamp(i, 0, size), p);
            break;
        case 2:
            list.del(i);
            if (inside) model.erase(model.begin() + i);
            break;
        case 3:
            list.remove(p);
            if (at != model.end()) model.erase(at);
            break;
        case 4:
            ASSERT_EQ(list.pop(), size ? model.back() : nullptr);
            if (size) model.pop_back();
            break;
        case 5:
            other.add(p);
            otherModel.push_back(p);
            break;
        case 6:
            ASSERT_EQ(list.move(&other, p, i), atOther != otherModel.end());
            if (atOther == otherModel.end()) break;
            otherModel.erase(atOther);
            model.insert(model.begin() + (i < 0 ? size : std::min(i, size)), p);
            break;
        }
        ASSERT_TRUE(contents(list) == model && contents(other) == otherModel) << "step " << step;
        ASSERT_EQ(list.getCount(), int(model.size()));
        ASSERT_EQ(list.last(), model.empty() ? nullptr : model.back());
    }
}

TEST(CList, CursorSurvivesRemovalAndClearing) {
    int v[3];
    CList list;
    for (int& value : v) list.addLast(&value);
    EXPECT_EQ(list.first(), &v[0]);
    EXPECT_EQ(list.next_old(), &v[1]);
    list.del(1);
    list.del(0);
    EXPECT_EQ(list.next_old(), &v[2]) << "behind what was removed";
    list.add(&v[0]);
    list.first();
    list.addLast(&v[1]);
    EXPECT_EQ(contents(list), (Model{&v[2], &v[1], &v[0]}));
    list.clear();
    EXPECT_EQ(list.next_old(), nullptr);
}

TEST(CList, WalkEndsAtAStoredNullAndStartsAnew) {
    int v[2];
    CList list;
    list.add(&v[0]);
    list.add(nullptr);
    list.add(&v[1]);
    CListItem* it = nullptr;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(nextOf<int>(list, it), &v[0]);
        EXPECT_EQ(nextOf<int>(list, it), nullptr);
    }
    list.replace(nullptr, &v[1]);
    EXPECT_EQ(contents(list).size(), 3u);
}

/// A walker of another thread meets a growing prefix of complete items.
TEST(CList, MayBeWalkedWhileItGrows) {
    constexpr int total = 2000;
    std::vector<int> values(total);
    CList list;
    std::jthread writer([&] {
        for (int i = 0; i < total; ++i) {
            values[size_t(i)] = i;
            list.add(&values[size_t(i)]);
        }
    });
    for (int known = 0, seen = 0; known < total; known = seen) {
        const int count = list.getCount();
        seen = 0;
        for (const int* p : each<int>(list)) ASSERT_EQ(*p, seen++);
        ASSERT_GE(seen, std::max(count, known));
    }
}
