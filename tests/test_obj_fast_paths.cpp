// The shortcuts of the OBJ read path against what they stand in for: the batched number parser
// against a step-by-step reading and parsePoserFloat, the one-pass corner reader against leadingInt
// and faceTexIndex, and the plain-data array across the size where it changes how it allocates.
#include "support/PoserFloatReference.h"

#include <OvTypes.h>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <text/Numbers.h>
#include <text/Numbers.h>
#include <random>
#include <string>
#include <vector>

namespace {

std::string randomNumber(std::mt19937 &rng) {
    static const char kChars[] = "0123456789012345678901234567890123456789..--+eE x";
    std::string s;
    switch (rng() % 4) {
    case 0: // around the largest integer that single precision holds exactly
        s = std::to_string(16777200 + int(rng() % 40)) + "." + std::to_string(rng() % 1000);
        break;
    case 1: // a long run of zeros after the dot, beyond any early stop of the divisions
        s = "0." + std::string(rng() % 90, '0') + std::to_string(1 + rng() % 16777215);
        break;
    default:
        for (int n = int(rng() % 14); n > 0; --n)
            s += kChars[rng() % (sizeof kChars - 1)];
    }
    if (rng() % 4 == 0)
        s.insert(0, "-");
    return s;
}

} // namespace

TEST(ObjFastPaths, BatchedNumbersAreBitExact) {
    std::mt19937 rng(2024);
    const std::vector<std::string> fixed = {"",
                                            "-",
                                            ".",
                                            "0",
                                            "-0",
                                            "16777215",
                                            "16777216",
                                            "16777217",
                                            "167772.17",
                                            "99999999",
                                            "123456789.987654321",
                                            "1.2.3",
                                            "1-2",
                                            "12abc",
                                            "2.5e-1",
                                            "1e",
                                            "3e39",
                                            "-4e-50",
                                            "0.0000001",
                                            "0." + std::string(70, '0') + "16777215"};
    std::vector<std::string> texts = fixed;
    for (int i = 0; i < 20000; ++i)
        texts.push_back(randomNumber(rng));
    for (size_t start = 0; start < texts.size();) {
        const int count = 1 + int(rng() % 9); // batches of 1 to 9 tokens, past the internal group size
        std::vector<const char *> tokens;
        for (int j = 0; j < count && start + size_t(j) < texts.size(); ++j)
            tokens.push_back(texts[start + size_t(j)].c_str());
        std::vector<float> out(tokens.size(), 12345.0f);
        parsePoserFloats(tokens.data(), int(tokens.size()), out.data());
        for (size_t j = 0; j < tokens.size(); ++j) {
            const char *s = tokens[j];
            const float expected = std::strpbrk(s, "eE") ? parsePoserFloat(s) : reference(s);
            ASSERT_EQ(bits(out[j]), bits(expected)) << '"' << s << '"';
            ASSERT_EQ(bits(parsePoserFloat(s)), bits(expected)) << '"' << s << '"';
        }
        start += tokens.size();
    }
}

TEST(ObjFastPaths, CornerReaderAgreesWithTheGeneralFunctions) {
    std::vector<std::string> tokens = {"1",           "12/5",       "12/5/3",       "12//3",
                                       "-1/-1",       "12/",        "/5",           "1//",
                                       "-/3",         "+4/2",       "12abc/5",      "7/8abc",
                                       "999999999/1", "1234567890", "2147483648/2", "1/2147483649",
                                       "-2147483649", "0/0",        "3/-0",         ""};
    std::mt19937 rng(99);
    static const char kChars[] = "0123456789/-+a";
    for (int i = 0; i < 20000; ++i) {
        std::string s;
        for (int n = int(rng() % 13); n > 0; --n)
            s += kChars[rng() % (sizeof kChars - 1)];
        tokens.push_back(s);
    }
    int taken = 0;
    for (const std::string &t : tokens) {
        int vertex = -7, tex = -7;
        bool hasTex = false;
        if (!text::readCorner(t.c_str(), vertex, hasTex, tex))
            continue; // the reader then uses the general functions themselves
        ++taken;
        int generalTex = -7;
        const bool generalHasTex = text::faceTexIndex(t.c_str(), generalTex);
        EXPECT_EQ(vertex, text::leadingInt(t.c_str())) << t;
        ASSERT_EQ(hasTex, generalHasTex) << t;
        if (hasTex) {
            EXPECT_EQ(tex, generalTex) << t;
        }
    }
    EXPECT_GT(taken, 1000); // the usual forms do take the short way
}

TEST(ObjFastPaths, PodArrayKeepsItsValuesAcrossTheLargeBlockSize) {
    OvPodArray<int> a;
    const int n = 3 << 20; // 12 MiB of ints: through the heap, own mappings, then huge-page ones
    for (int i = 0; i < n; ++i)
        a.push_back(i * 7);
    ASSERT_EQ(a.size(), size_t(n));
    OvPodArray<int> copy(a);
    a.shrinkToFit();
    EXPECT_GE(a.capacity(), a.size());
    EXPECT_LT(a.bytes(), a.size() * sizeof(int) + 4096); // trimmed to whole pages
    for (int i = 0; i < n; i += 4099)
        ASSERT_EQ(a[size_t(i)], i * 7);
    EXPECT_EQ(copy[size_t(n - 1)], (n - 1) * 7);

    OvPodArray<int> moved(std::move(copy));
    EXPECT_EQ(copy.size(), 0u);
    moved.truncate(1000); // back below the large size: onto the heap again
    moved.shrinkToFit();
    EXPECT_EQ(moved.capacity(), 1000u);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(moved[size_t(i)], i * 7);
    moved.resize(size_t(n)); // and up again from the heap
    EXPECT_EQ(moved[999], 999 * 7);
    moved[size_t(n - 1)] = 1;
    a.clear();
    a.shrinkToFit();
    EXPECT_EQ(a.capacity(), 0u);
    EXPECT_EQ(a.data(), nullptr);
}
