// The text grammar below both importers. Poser numbers are compared bit for bit with a literal
// transcription of their steps (each step is one single-precision operation); the batched parser
// and the one-pass corner reader with the general functions they stand in for.
#include <QElapsedTimer>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <text/Numbers.h>
#include <text/Paths.h>
#include <vector>

namespace {

uint32_t bits(float f) {
    uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

// The steps as plainly as possible; volatile keeps every intermediate a float.
float reference(const char *s) {
    volatile float v = 0.0f;
    bool negative = false, dot = false;
    long fraction = 0;
    for (; *s; ++s) {
        const char c = *s;
        if (c >= '0' && c <= '9') {
            v = v * 10.0f;
            v = v + float(c - '0');
            fraction += dot;
        } else if (c == '-') {
            negative = true;
        } else if (c == '.') {
            dot = true;
        } else if (c == 'e' || c == 'E') {
            const double e = std::trunc(double(reference(s + 1)));
            const long long n = e > 2147483647.0    ? 2147483647LL
                                : e < -2147483648.0 ? -2147483648LL
                                                    : (long long)e;
            for (long long i = 0; i < n && v != 0.0f && !std::isinf(v); ++i)
                v = v * 10.0f;
            for (long long i = 0; i < -n && v != 0.0f; ++i)
                v = v / 10.0f;
            break;
        } else if (c != '+') {
            return 0.0f;
        }
    }
    if (negative)
        v = -v;
    for (long i = 0; i < fraction; ++i)
        v = v / 10.0f;
    return v;
}

// Signs and dots anywhere; any foreign character makes 0, after an exponent mark only the exponent;
// exponents chain from the right, truncated toward zero; sign and fraction act after the exponent.
// Long runs of marks must neither recurse deeply nor take long.
TEST(Numbers, RulesByExample) {
    QElapsedTimer timer;
    timer.start();
    const std::string marks(1000000, 'e');
    std::string chain = "1e1";
    for (int i = 0; i < 200000; ++i)
        chain += "e0";
    // clang-format off
    const std::pair<std::string, float> cases[] = {
        {"1.5", 1.5f}, {"-0.25", -0.25f}, {"1-2", -12.0f}, {"1.2.3", 123.0f / 10.0f / 10.0f}, {"+7", 7.0f},
        {"--3", -3.0f}, {"-", -0.0f}, {"", 0.0f}, {"12abc", 0.0f}, {" 1", 0.0f}, {"1,5", 0.0f}, {"1\xe9", 0.0f},
        {"7e2x", 7.0f}, {"2.5e-1", 0.25f}, {"3E2", 300.0f}, {"1e", 1.0f}, {"1e2e3", INFINITY}, {"1e1e1", 1e10f},
        {"5e-1e0", 0.5f}, {"3e2.9", 300.0f}, {"3e-.5", 3.0f}, {"1ee2", 1.0f}, {"-1.5e1", -15.0f},
        {"-1e99999999", -INFINITY}, {"-1e-99999999", -0.0f}, {"0e99999999", 0.0f}, {"1e-2147483648", 0.0f},
        {marks, 0.0f}, {"1" + marks + "5", 1.0f}, {chain, 10.0f}};
    // clang-format on
    for (const auto &[text, value] : cases)
        EXPECT_EQ(bits(parsePoserFloat(text.c_str())), bits(value)) << '"' << text.substr(0, 20) << '"';
    EXPECT_LT(timer.elapsed(), 2000);
}

// Random texts one by one and in batches of 1 to 9 (past the internal group of four). Among the long
// fractions some step-by-step results are not the float nearest to the text: that must stay so.
TEST(Numbers, RandomTextsOneByOneAndBatchedMatchTheSteps) {
    std::mt19937 rng(2024);
    std::vector<std::string> texts = {"16777217", "167772.17", "123456789.987654321", "99999999.99999999"};
    for (int i = 0; i < 100000; ++i) {
        std::string s;
        if (i % 3 == 0) // around the largest integer that single precision holds exactly
            s = std::to_string(16777200 + rng() % 40) + "." + std::to_string(rng());
        else if (i % 3 == 1) // long runs of zeros after the dot, beyond any early stop of the divisions
            s = "0." + std::string(rng() % 90, '0') + std::to_string(1 + rng() % 16777215);
        else // any mix of the characters of numbers
            for (int n = int(rng() % 16); n > 0; --n)
                s += "0123456789012345678901234567890123456789..--+eE"[rng() % 47];
        texts.push_back((rng() % 4 ? "" : "-") + s + (rng() % 50 ? "" : "x"));
    }
    int notNearest = 0;
    for (size_t start = 0; start < texts.size();) {
        const size_t count = std::min<size_t>(1 + rng() % 9, texts.size() - start);
        std::vector<const char *> tokens;
        for (size_t j = 0; j < count; ++j)
            tokens.push_back(texts[start + j].c_str());
        std::vector<float> out(count);
        parsePoserFloats(tokens.data(), int(count), out.data());
        for (size_t j = 0; j < count; ++j) {
            const uint32_t want = bits(reference(tokens[j]));
            ASSERT_EQ(bits(parsePoserFloat(tokens[j])), want) << '"' << tokens[j] << '"';
            ASSERT_EQ(bits(out[j]), want) << '"' << tokens[j] << '"' << " in a batch of " << count;
            notNearest += !std::strpbrk(tokens[j], "eE") && want != bits(std::strtof(tokens[j], nullptr));
        }
        start += count;
    }
    EXPECT_GT(notNearest, 100);
}

TEST(Numbers, IntegersAndTexturePartsOfCorners) {
    for (auto [text, value] : {std::pair<const char *, int>{"12/5/3", 12},
                               {"-3//1", -3},
                               {"/4", 0},
                               {" \t+8x", 8},
                               {"99999999999", INT_MAX},
                               {"-99999999999", INT_MIN}})
        EXPECT_EQ(text::leadingInt(text), value) << text;
    for (auto [text, index] : {std::pair<const char *, int>{"12/5/3", 4},
                               {"1/-2", -3},
                               {"1/", -1},
                               {"-2147483648/-2147483648", INT_MIN},
                               {"1//3", 77},
                               {"7", 77}}) {
        int got = 77;
        EXPECT_EQ(text::faceTexIndex(text, got), index != 77) << text;
        EXPECT_EQ(got, index) << text;
    }
}

TEST(Numbers, CornerFastPathAgreesWithTheGeneralFunctions) {
    std::vector<std::string> tokens = {"1",     "12/5",        "12/5/3",       "12//3",
                                       "-1/-1", "1//",         "0/0",          "3/-0",
                                       "-/3",   "999999999/1", "2147483648/2", "1/2147483649"};
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
        if (!text::readCorner(t.c_str(), vertex, hasTex, tex))
            continue; // the reader then uses the general functions themselves
        ++taken;
        EXPECT_EQ(vertex, text::leadingInt(t.c_str())) << t;
        ASSERT_EQ(hasTex, text::faceTexIndex(t.c_str(), generalTex)) << t;
        EXPECT_EQ(tex, hasTex ? generalTex : -7) << t;
    }
    EXPECT_GT(taken, 1000); // the usual forms do take the short way
}

TEST(Paths, EachRuleTurnsItsSeparatorsIntoSlashes) {
    using namespace text;
    // clang-format off
    const struct { const char *path; unsigned rules; const char *expected; } cases[] = {
        {":Runtime:Geometries:a.obj", Colons | Backslashes, "/Runtime/Geometries/a.obj"},
        {"C:\\maps\\a.jpg", Colons | Backslashes, "C//maps/a.jpg"},
        {"C:\\Poser\\a:b.obj", Backslashes, "C:/Poser/a:b.obj"},
        {":Runtime:a.obj", ColonsUnlessBackslash, "/Runtime/a.obj"},
        {"C:\\Poser:a.obj", ColonsUnlessBackslash, "C:\\Poser:a.obj"},
        {":Runtime:a.obj", ColonsUnlessBackslash | Backslashes, "/Runtime/a.obj"},
        {"C:\\Poser:a.obj", ColonsUnlessBackslash | Backslashes, "C:/Poser:a.obj"}};
    // clang-format on
    for (const auto &c : cases)
        EXPECT_EQ(withSlashes(QString::fromLatin1(c.path), c.rules).toStdString(), c.expected) << c.path;
}

} // namespace
