#include "base/Numbers.h"

#include "TempFolder.h"
#include "base/Random.h"

#include <climits>
#include <cmath>
#include <thread>
#include <tuple>

namespace {

const double notANumber = std::nan("");
const double inf = std::numeric_limits<double>::infinity();

} // namespace

TEST(Numbers, ConversionsSaturate) {
    for (const auto& [v, cut, rounded] :
         std::initializer_list<std::tuple<double, int, int>>{{2.5, 2, 3},
                                                             {-2.5, -2, -2},
                                                             {-2.51, -2, -3},
                                                             {2147483648.0, INT_MAX, INT_MAX},
                                                             {1e300, INT_MAX, INT_MAX},
                                                             {-inf, INT_MIN, INT_MIN},
                                                             {notANumber, 0, 0}}) {
        EXPECT_EQ(asInt(v), cut) << v;
        EXPECT_EQ(asRound(v), rounded) << v;
    }
    EXPECT_EQ(asInt64(9.3e18), INT64_MAX);
    EXPECT_EQ(asInt64(-9.3e18), INT64_MIN);
    EXPECT_EQ(asInt64(notANumber), 0);
    EXPECT_EQ(saturate(int64_t(INT_MAX) + 1), INT_MAX);
    EXPECT_EQ(limitTicks(INT64_MAX), 1073741824);
    EXPECT_EQ(limitTicks(INT_MIN), -1073741824);
}

TEST(Numbers, LimitsPutNotANumberOnTheLowerBound) {
    EXPECT_EQ(fLimit(float(notANumber), 1.0f, 2.0f), 1.0f);
    EXPECT_EQ(fLimit(notANumber, 1.0, 2.0), 1.0);
    EXPECT_EQ(asTrim(3.0f, 1.0f, 2.0f), 2.0f);
    EXPECT_EQ(asMinMax(1, 5, 3), 5) << "the lower bound is tested first";
    EXPECT_EQ(asMinMax(6, 5, 3), 3);
}

TEST(Numbers, ReadsNumbersOnlyFromWhatLooksLikeOne) {
    for (const char* text : {"1", "1-2", "1-", "1.9", "1,9", "001"})
        EXPECT_EQ(strAsIntDef(text, 7), 1) << text;
    for (const char* text : {"-", ".5", "0", "-0.5"}) EXPECT_EQ(strAsIntDef(text, 7), 0) << text;
    for (const char* text : {"1a", "", " 1", "+1", "--1", "1-2-", "1.2,3", "1e3", "\t"})
        EXPECT_EQ(strAsIntDef(text, 7), 7) << text;
    EXPECT_EQ(strAsIntDef("99999999999", 7), INT_MAX);
    EXPECT_EQ(strAsIntDef("-99999999999999999999", 7), INT_MIN);
    EXPECT_EQ(stripValue("a=b=c") + stripValue("d"), "ad");
    EXPECT_EQ(swap3(0x123456), 0x563412u);
}

TEST(Numbers, FormatsThroughSafeFormatsOnly) {
    for (const char* format : {"%s", "%d %d", "%n", "%f", "%ld", "%*d", "100%", "%1$d", "%9999d"})
        EXPECT_EQ(asStrFormat(65, format), format);
    for (auto [format, wanted] :
         {std::pair("[%05i] %%", "[00065] %"), {"%x%%", "41%"}, {"%c", "A"}, {"%-4u|", "65  |"}})
        EXPECT_EQ(asStrFormat(65, format), wanted) << format;
    for (auto [format, wanted] :
         {std::pair("%.2f dB", "1.50 dB"), {"%g", "1.5"}, {"%d", "%d"}, {"%s%f", "%s%f"}})
        EXPECT_EQ(asStrFormat(1.5f, format), wanted) << format;
    EXPECT_EQ(asStrFormat(-1, "%u"), "4294967295");
    EXPECT_EQ(asStr(0.25f), "0.250000");
    EXPECT_EQ(asStr(-1e300).length(), 1 + 301 + 7);
    EXPECT_EQ(asStr(INT64_MIN), "-9223372036854775808");
}

/// Mean and neighbours of an even distribution; five standard deviations wide.
TEST(Random, IsEvenAndRepeatsItself) {
    constexpr int n = 1000000;
    seedRand(5);
    double sum = 0, products = 0, last = 0.5;
    for (int i = 0; i < n; ++i) {
        const double v = asRand();
        ASSERT_TRUE(v >= 0.0 && v < 1.0);
        sum += v;
        products += (v - 0.5) * (last - 0.5);
        last = v;
    }
    EXPECT_NEAR(sum / n, 0.5, 5 * std::sqrt(1.0 / 12 / n));
    EXPECT_NEAR(products / n, 0.0, 5.0 / 12 / std::sqrt(double(n)));

    const auto first = [](int seed) {
        seedRand(seed);
        std::thread([] { seedRand(7), asRandInt(); }).join();
        return asRandInt();
    };
    EXPECT_EQ(first(5), first(5));
    EXPECT_NE(first(6), first(5));
    int ofThread[2] = {};
    for (int& v : ofThread) std::thread([&v] { v = asRandInt(); }).join();
    EXPECT_NE(ofThread[0], ofThread[1]) << "every thread has a seed of its own";
}
