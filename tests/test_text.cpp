// The text grammar below both importers. Poser numbers are compared bit for bit with a literal
// transcription of their steps (each step is one single-precision operation); the batched parser,
// the in-place scans of the OBJ reader and the one-pass corner reader with the general functions
// they stand in for. bench/number_identity does the same on 10^8 numbers.
#include "support/NumberReference.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <text/NumberScan.h>
#include <text/Paths.h>
#include <tuple>
#include <vector>

namespace {

// Signs and dots anywhere; any foreign character makes 0, after an exponent mark only the exponent;
// exponents chain from the right, truncated toward zero; sign and fraction act after the exponent.
// Long runs of marks must neither recurse deeply nor take long.
TEST(Numbers, RulesByExample) {
    QElapsedTimer timer;
    timer.start();
    const std::string marks(1000000, 'e');
    const std::string chain = "1e1" + QByteArray("e0").repeated(200000).toStdString();
    // clang-format off
    const std::pair<std::string, float> cases[] = {
        {"1.5", 1.5f}, {"-0.25", -0.25f}, {"1-2", -12.0f}, {"1.2.3", 123.0f / 10.0f / 10.0f}, {"+7", 7.0f},
        {"--3", -3.0f}, {"-", -0.0f}, {"", 0.0f}, {"12abc", 0.0f}, {" 1", 0.0f}, {"1,5", 0.0f},
        {"1\xe9", 0.0f}, {"7e2x", 7.0f}, {"2.5e-1", 0.25f}, {"3E2", 300.0f}, {"1e", 1.0f},
        {"1e2e3", INFINITY}, {"1e1e1", 1e10f}, {"5e-1e0", 0.5f}, {"3e2.9", 300.0f}, {"3e-.5", 3.0f},
        {"1ee2", 1.0f}, {"-1.5e1", -15.0f}, {"-1e99999999", -INFINITY}, {"-1e-99999999", -0.0f},
        {"0e99999999", 0.0f}, {"1e-2147483648", 0.0f}, {marks, 0.0f}, {"1" + marks + "5", 1.0f},
        {chain, 10.0f}};
    // clang-format on
    for (const auto &[text, value] : cases)
        EXPECT_EQ(floatBits(parsePoserFloat(text.c_str())), floatBits(value))
            << '"' << text.substr(0, 20) << '"';
    EXPECT_LT(timer.elapsed(), 2000);
}

// Random texts one by one and in batches of 1 to 9 (past the internal group of four). Long fractions
// matter: dividing step by step gives for some of them a float other than the nearest, as it must.
TEST(Numbers, RandomTextsOneByOneAndBatchedMatchTheSteps) {
    std::mt19937 rng(2024);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::string> texts(1 + rng() % 9);
        std::vector<const char *> tokens;
        for (std::string &s : texts) {
            const unsigned kind = rng() % 3;
            if (kind == 0) // around the largest integer that single precision holds exactly
                s = std::to_string(16777200 + rng() % 40) + "." + std::to_string(rng());
            else if (kind == 1) // long runs of zeros after the dot, beyond any early stop of the divisions
                s = "0." + std::string(rng() % 90, '0') + std::to_string(1 + rng() % 16777215);
            else // any mix of the characters of numbers
                for (int n = int(rng() % 16); n > 0; --n)
                    s += "0123456789012345678901234567890123456789..--+eE"[rng() % 47];
            s = (rng() % 4 ? "" : "-") + s + (rng() % 50 ? "" : "x");
            tokens.push_back(s.c_str());
        }
        std::vector<float> out(texts.size());
        parsePoserFloats(tokens.data(), int(tokens.size()), out.data());
        for (size_t j = 0; j < tokens.size(); ++j) {
            const uint32_t want = floatBits(referenceNumber(tokens[j]));
            ASSERT_EQ(floatBits(parsePoserFloat(tokens[j])), want) << '"' << tokens[j] << '"';
            ASSERT_EQ(floatBits(out[j]), want)
                << '"' << tokens[j] << '"' << " in a batch of " << tokens.size();
            // In place at the end of a line, as the OBJ reader scans it, where the scan takes it.
            const std::string line = "v 1 2.5 " + texts[j]; // eight bytes before, as the scans need
            float value = 0.0f, finished = 0.0f;
            int32_t divisions = 0;
            const char *last = line.c_str() + line.size();
            if (text::scanPlainFloat(line.c_str() + 8, last, value, divisions) == last) {
                text::finishFloats(&value, &divisions, 1, &finished);
                ASSERT_EQ(floatBits(finished), want) << '"' << tokens[j] << '"';
            }
        }
    }
}

// leadingInt reads as atoi does, saturated; faceTexIndex gives the number after the first '/' less 1,
// unless a second '/' follows. The one-pass corner reader, where it takes a token, agrees with both.
TEST(Numbers, FaceCorners) {
    const int none = 77;
    // clang-format off
    const std::tuple<const char *, int, int> cases[] = {
        {"12/5/3", 12, 4}, {"-3//1", -3, none}, {"/4", 0, 3}, {" \t+8x", 8, none}, {"1/-2", 1, -3},
        {"1/", 1, -1}, {"99999999999", INT_MAX, none}, {"-99999999999", INT_MIN, none}, {"7", 7, none},
        {"1//", 1, none}, {"-2147483648/-2147483648", INT_MIN, INT_MIN}, {"999999999/1", 999999999, 0},
        {"-/3", 0, 2}, {"2147483648/2", INT_MAX, 1}, {"1/2147483649", 1, INT_MAX - 1}};
    // clang-format on
    std::vector<std::string> tokens;
    for (const auto &[token, vertex, tex] : cases) {
        int got = none;
        EXPECT_EQ(text::leadingInt(token), vertex) << token;
        EXPECT_EQ(text::faceTexIndex(token, got), tex != none) << token;
        EXPECT_EQ(got, tex) << token;
        tokens.push_back(token);
    }
    std::mt19937 rng(99);
    for (int i = 0; i < 20000; ++i) {
        std::string s;
        for (int n = int(rng() % 13); n > 0; --n)
            s += "0123456789/-+a"[rng() % 14];
        tokens.push_back(s);
    }
    int taken = 0;
    for (const std::string &t : tokens) {
        int vertex = -7, tex = -7, generalTex = -7;
        bool hasTex = false;
        // In place at the end of a line, as the OBJ reader scans corners, with the same results.
        const std::string line = "f 1 2 3 " + t;
        int lineVertex = -7, lineTex = -7;
        bool lineHasTex = false;
        const bool inLine =
            text::scanCorner(line.c_str() + 8, line.c_str() + line.size(), lineVertex, lineHasTex, lineTex);
        // And within a longer line, where sixteen characters are classified at once: the reader
        // passes what follows up to the next blank, so the corner's end is where both stop.
        const std::string longLine = line + std::string(16, ' ');
        int midVertex = -7, midTex = -7;
        bool midHasTex = false;
        const char *mid =
            text::scanCorner(longLine.c_str() + 8, &longLine.back(), midVertex, midHasTex, midTex);
        while (mid && !text::isBlank(*mid))
            ++mid;
        if (!text::readCorner(t.c_str(), vertex, hasTex, tex)) {
            EXPECT_FALSE(inLine || mid) << t;
            continue; // the reader then uses the general functions themselves
        }
        ++taken;
        EXPECT_EQ(vertex, text::leadingInt(t.c_str())) << t;
        ASSERT_EQ(hasTex, text::faceTexIndex(t.c_str(), generalTex)) << t;
        EXPECT_EQ(tex, hasTex ? generalTex : -7) << t;
        EXPECT_TRUE(inLine && lineVertex == vertex && lineHasTex == hasTex && lineTex == tex) << t;
        EXPECT_TRUE(mid == longLine.c_str() + line.size() && midVertex == vertex && midHasTex == hasTex &&
                    midTex == tex)
            << t;
    }
    EXPECT_GT(taken, 1000); // the usual forms do take the short way
}

TEST(Paths, EachRuleTurnsItsSeparatorsIntoSlashes) {
    using namespace text;
    // clang-format off
    const struct { const char *path; unsigned rules; const char *expected; } cases[] = {
        {":Runtime:Geometries:a.obj", Colons | Backslashes, "/Runtime/Geometries/a.obj"},
        {"C:\\maps\\a.jpg", Colons | Backslashes, "C//maps/a.jpg"},
        {"C:\\Po\\a:b.obj", Backslashes, "C:/Po/a:b.obj"}, {":R:a.obj", ColonsUnlessBackslash, "/R/a.obj"},
        {"C:\\Po:a", ColonsUnlessBackslash, "C:\\Po:a"},
        {":R:a.obj", ColonsUnlessBackslash | Backslashes, "/R/a.obj"},
        {"C:\\Po:a", ColonsUnlessBackslash | Backslashes, "C:/Po:a"}};
    // clang-format on
    for (const auto &c : cases)
        EXPECT_EQ(withSlashes(QString::fromLatin1(c.path), c.rules).toStdString(), c.expected) << c.path;
}

} // namespace
