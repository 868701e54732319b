#include "timecode/TimecodeCalculator.h"

#include <limits>
#include <tuple>

#include <boost/numeric/conversion/cast.hpp>
#include <gtest/gtest.h>

namespace {

using Label = std::tuple<int, int, int, int, int>;

Label label(const TimecodeCalculator& calculator, std::uint32_t count) {
    std::uint8_t h = 0;
    std::uint8_t m = 0;
    std::uint8_t s = 0;
    std::uint8_t f = 0;
    std::uint8_t sub = 0;
    calculator.toTimecode(count, h, m, s, f, &sub);
    return {h, m, s, f, sub};
}

template <class... Arguments>
std::string factoryError(Arguments... arguments) {
    try {
        createTimecodeCalculator(arguments...);
        return "none";
    } catch (const std::runtime_error& e) {
        return e.what();
    }
}

} // namespace

TEST(TimecodeCalculator, DropFrameLabels) {
    const auto c = createTimecodeCalculator(30000, 1001);
    EXPECT_EQ(label(*c, 1799), Label(0, 0, 59, 29, 0));
    EXPECT_EQ(label(*c, 1800), Label(0, 1, 0, 2, 0));
    EXPECT_EQ(label(*c, 17982), Label(0, 10, 0, 0, 0));
    EXPECT_EQ(label(*c, 2589408), Label(24, 0, 0, 0, 0));
    EXPECT_EQ(c->toFrames(0, 1, 0, 0), 1800U);
    EXPECT_EQ(c->toFrames(0, 1, 0, 2), 1800U);
    EXPECT_FALSE(c->isValidTimecode(0, 1, 0, 0));
    EXPECT_TRUE(c->isInRange(0, 1, 0, 0));
    EXPECT_TRUE(c->isValidTimecode(0, 10, 0, 0));
    EXPECT_EQ(c->getFramesPerDay(), 2589408U);
}

/// Every count of a day gives a valid label, later than the one before, that leads back to the count.
TEST(TimecodeCalculator, EveryCountOfADayAndBack) {
    for (const auto& c : {createTimecodeCalculator(30, true, std::uint8_t{1}), createTimecodeCalculator(60, true, true),
                          createTimecodeCalculator(25, false, true)}) {
        Label before{-1, 0, 0, 0, 0};
        for (std::uint32_t n = 0; n < c->getFramesPerDay(); ++n) {
            const Label now = label(*c, n);
            const auto [h, m, s, f, sub] = now;
            const auto o = [](int v) { return static_cast<std::uint8_t>(v); };
            ASSERT_LT(before, now);
            ASSERT_TRUE(c->isValidTimecode(o(h), o(m), o(s), o(f), o(sub))) << n;
            ASSERT_EQ(c->toFrames(o(h), o(m), o(s), o(f), o(sub)), n);
            before = now;
        }
    }
}

TEST(TimecodeCalculator, RatesChooseTheCounting) {
    EXPECT_EQ(createTimecodeCalculator(60000, 1001)->getFramesPerDay(), 2U * 2589408U);
    EXPECT_EQ(createTimecodeCalculator(24000, 1001)->getFramesPerDay(), 24U * 86400U);
    EXPECT_EQ(createTimecodeCalculator(50, 1)->getFramesPerDay(), 50U * 86400U);
    EXPECT_EQ(createTimecodeCalculator(-25, -1)->getFramesPerDay(), 25U * 86400U);
    EXPECT_EQ(factoryError(0, 1), "non-zero frame rate");
    EXPECT_EQ(factoryError(1, 0), "non-zero frame rate denominator");
    EXPECT_EQ(factoryError(-25, 1), "positive frame rate");
    EXPECT_EQ(factoryError(1, 3), "non-zero frame rate");
    EXPECT_EQ(factoryError(256, 1), "non-zero frame rate");
    EXPECT_THROW(createTimecodeCalculator(25, true, true), std::runtime_error);
    EXPECT_THROW(createTimecodeCalculator(0, false, true), std::runtime_error);
    EXPECT_EQ(createTimecodeCalculator(25, false, std::uint8_t{0})->getFramesPerDay(), 2160000U);
}

/// Rates come as integers of many types: from properties, from arithmetic, as literals.
TEST(TimecodeCalculator, TakesIntegersOfAnyType) {
    const auto day = [](const auto... arguments) { return createTimecodeCalculator(arguments...)->getFramesPerDay(); };
    EXPECT_EQ(day(30000U, 1001U), 2589408U);
    EXPECT_EQ(day(std::int64_t{60000}, std::int64_t{1001}), 2U * 2589408U);
    EXPECT_EQ(day(std::uint64_t{24000}, 1001), 24U * 86400U);
    EXPECT_EQ(day(std::uint8_t{25}, std::uint8_t{1}), 25U * 86400U);
    EXPECT_EQ(day(std::int16_t{-25}, std::int64_t{-1}), 25U * 86400U);
    // Far beyond 32 bits, with the same quotient.
    EXPECT_EQ(day(std::int64_t{30000} * 100000000000, std::int64_t{1001} * 100000000000), 2589408U);
    EXPECT_EQ(day(~std::uint64_t{0}, ~std::uint64_t{0} / 25), 25U * 86400U);
    EXPECT_EQ(day(std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::min() / 32),
              32U * 86400U);
    EXPECT_EQ(day(30U, true, false), 2589408U);
    EXPECT_EQ(day(std::int64_t{25}, false, 2), 2U * 25U * 86400U);
    EXPECT_EQ(day(std::uint8_t{25}, false, std::uint64_t{0}), 25U * 86400U);

    EXPECT_EQ(factoryError(0U, 1U), "non-zero frame rate");
    EXPECT_EQ(factoryError(std::int64_t{1}, 0U), "non-zero frame rate denominator");
    EXPECT_EQ(factoryError(std::int64_t{-25}, 1U), "positive frame rate");
    EXPECT_EQ(factoryError(~std::uint64_t{0}, -1), "positive frame rate");
    EXPECT_EQ(factoryError((std::int64_t{1} << 32U) + 25, 1), "non-zero frame rate");
    EXPECT_EQ(factoryError(281U, false, true), "non-zero frame rate");
    EXPECT_EQ(factoryError(-25, false, true), "positive frame rate");
    EXPECT_EQ(factoryError(25, true, 1), "valid drop frame rate");
    EXPECT_THROW(createTimecodeCalculator(25, false, 256), boost::numeric::positive_overflow);
    EXPECT_THROW(createTimecodeCalculator(25, false, -1), boost::numeric::negative_overflow);
}

TEST(TimecodeCalculator, RangesAndNormalising) {
    const auto c = createTimecodeCalculator(25, false, true);
    EXPECT_EQ(label(*c, 4320001), Label(24, 0, 0, 0, 1));
    EXPECT_FALSE(c->isInRange(24, 0, 0, 0));
    EXPECT_FALSE(c->isInRange(0, 60, 0, 0));
    EXPECT_FALSE(c->isInRange(0, 0, 60, 0));
    EXPECT_FALSE(c->isInRange(0, 0, 0, 25));
    EXPECT_FALSE(c->isInRange(0, 0, 0, 0, 2));
    EXPECT_THROW(c->toFrames(0, 0, 0, 25), std::runtime_error);
    const auto plain = createTimecodeCalculator(25, 1);
    EXPECT_EQ(plain->normalise(-1), 2159999U);
    EXPECT_EQ(plain->normalise(2160000), 0U);
    EXPECT_EQ(plain->normalise(-2160000), 0U);
}
