// The Poser number parser against a literal, recursive transcription of its steps: every step is a
// single-precision operation, so the results must agree bit for bit, not just approximately.
#include <text/Numbers.h>

#include <QElapsedTimer>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "support/PoserFloatReference.h"

namespace {

#define EXPECT_SAME_FLOAT(text, expected)                                                                    \
    do {                                                                                                     \
        float got_ = parsePoserFloat(text);                                                                  \
        float want_ = (expected);                                                                            \
        EXPECT_EQ(bits(got_), bits(want_)) << '"' << (text) << "\" gave " << got_ << ", expected " << want_; \
    } while (0)

TEST(PoserFloat, ExamplesOfTheNumberRules) {
    EXPECT_SAME_FLOAT("1.5", 1.5f);
    EXPECT_SAME_FLOAT("-0.25", -0.25f);
    EXPECT_SAME_FLOAT("2.5e-1", 0.25f);
    EXPECT_SAME_FLOAT("1-2", -12.0f);
    EXPECT_SAME_FLOAT("1.2.3", 123.0f / 10.0f / 10.0f);
    EXPECT_SAME_FLOAT("12abc", 0.0f);
    EXPECT_SAME_FLOAT("", 0.0f);
    EXPECT_SAME_FLOAT("1e", 1.0f);
    EXPECT_SAME_FLOAT("-", -0.0f);
    EXPECT_SAME_FLOAT(".", 0.0f);
    EXPECT_SAME_FLOAT(" 1", 0.0f);
    EXPECT_SAME_FLOAT("+7", 7.0f);
    EXPECT_SAME_FLOAT("5-", -5.0f);
    EXPECT_SAME_FLOAT("--3", -3.0f);
    EXPECT_SAME_FLOAT("3E2", 300.0f);
}

TEST(PoserFloat, AnyForeignCharacterMakesZero) {
    for (const char *text : {"1,5", "1 ", "0x10", "1.5f", "\t2", "inf", "nan", "1\xe9", "12/3", "4#"})
        EXPECT_SAME_FLOAT(text, 0.0f);
    // After an exponent mark the foreign character only spoils the exponent, which then counts 0.
    EXPECT_SAME_FLOAT("7e2x", 7.0f);
    EXPECT_SAME_FLOAT("7.5e-x", 7.5f);
}

// Seven and more fractional digits: the digits build an integer first, then every division by 10
// rounds; that differs from a correctly rounded conversion for some inputs, and this must match it.
TEST(PoserFloat, FractionsAreDividedStepByStep) {
    const char *cases[] = {"0.1234567",   "3.1415927",     "-0.0000001",       "0.9999999",
                           "123.4567891", "1.23456789",    "16777217.1",       "0.33333333",
                           "-2.71828182", "0.00000000001", "99999999.99999999"};
    for (const char *text : cases)
        EXPECT_SAME_FLOAT(text, reference(text));
    // Over many 7-digit fractions some step-by-step values are not the float nearest to the text.
    int differences = 0;
    for (int i = 0; i < 2000; ++i) {
        std::string text = "0." + std::to_string(1000000 + i * 4409);
        float steps = parsePoserFloat(text.c_str());
        EXPECT_EQ(bits(steps), bits(reference(text.c_str()))) << text;
        differences += bits(steps) != bits(std::strtof(text.c_str(), nullptr));
    }
    EXPECT_GT(differences, 0) << "no 7-digit fraction differs from strtof: rounding is not step by step";
}

TEST(PoserFloat, ExponentChainsApplyFromTheRight) {
    // 1e2e3 = 1 x 10^(2e3) = 1 x 10^2000: infinite.
    EXPECT_SAME_FLOAT("1e2e3", INFINITY);
    EXPECT_SAME_FLOAT("1e2e0", 100.0f);
    EXPECT_SAME_FLOAT("1e1e1", 1e10f);
    EXPECT_SAME_FLOAT("5e-1e0", 0.5f);
    // The exponent is truncated toward zero: 2.9 -> 2, -0.5 -> 0.
    EXPECT_SAME_FLOAT("3e2.9", 300.0f);
    EXPECT_SAME_FLOAT("3e-.5", 3.0f);
    EXPECT_SAME_FLOAT("1ee2", 1.0f); // the empty text between the marks is 0 x 10^2
    // Sign and fraction of the mantissa act after the exponent: 15 x 10 = 150, negated, then / 10.
    EXPECT_SAME_FLOAT("-1.5e1", -15.0f);
    EXPECT_SAME_FLOAT("x1e2", 0.0f);
}

TEST(PoserFloat, HugeExponentsAndLongMarkRunsFinishQuickly) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_SAME_FLOAT("1e99999999", INFINITY);
    EXPECT_SAME_FLOAT("1e-99999999", 0.0f);
    EXPECT_SAME_FLOAT("-1e99999999", -INFINITY);
    EXPECT_SAME_FLOAT("-1e-99999999", -0.0f);
    EXPECT_SAME_FLOAT("0e99999999", 0.0f);
    EXPECT_SAME_FLOAT("1e-2147483648", 0.0f);
    // A million marks must neither recurse a million deep nor take long.
    const std::string marks(1000000, 'e');
    EXPECT_SAME_FLOAT(marks.c_str(), 0.0f);
    EXPECT_SAME_FLOAT(("1" + marks + "5").c_str(), 1.0f); // 1 x 10^(0 x 10^...) = 1
    std::string chain = "1e1";
    for (int i = 0; i < 200000; ++i)
        chain += "e0";
    EXPECT_SAME_FLOAT(chain.c_str(), 10.0f); // 1 x 10^(1 x 10^(0 x ...)) = 10
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST(PoserFloat, RandomTextsMatchTheStepByStepReading) {
    std::mt19937 rng(20240611u);
    const char alphabet[] = "0123456789012345678901234567890123456789..--+eE";
    const int alphabetSize = int(sizeof alphabet) - 1;
    int mismatches = 0;
    for (int n = 0; n < 200000 && mismatches < 10; ++n) {
        std::string text;
        int len = 1 + int(rng() % 16);
        for (int i = 0; i < len; ++i)
            text += alphabet[rng() % unsigned(alphabetSize)];
        if (rng() % 50 == 0)
            text[rng() % text.size()] = "x /,\x80"[rng() % 5];
        float got = parsePoserFloat(text.c_str()), want = reference(text.c_str());
        if (bits(got) != bits(want)) {
            ++mismatches;
            ADD_FAILURE() << '"' << text << "\" gave " << got << ", expected " << want;
        }
    }
}

} // namespace
