// Delta and key lines read in place against the same lines split into tokens: every variant of the
// reader (in place or not, whole buffers or chunks of three bytes, so lines cross the chunk edges)
// gives the same deltas to the bit, the same keys and the same messages. The short-number scanners
// give what the general scanners give on any text.
#include "PoserTest.h"
#include "support/NumberReference.h"
#include "support/TestSupport.h"

#include <OvMorph.h>
#include <cstring>
#include <poser/Pz3InputFile.h>
#include <random>
#include <text/ShortScan.h>

namespace {

// Eight vertices; `deltas` and `keys` become the bodies of a morph's deltas and two keys sections.
QByteArray prop(const QByteArray &deltas, const QByteArray &dialKeys, const QByteArray &turnKeys) {
    return "{\nprop box\n{\ngeomCustom\n{\n" + QByteArray("v 0 0 0\n").repeated(8) +
           "f 1 2 3 4\n}\nchannels\n{\ntargetGeom Smile\n{\nindexes 9\ndeltas\n{\n" + deltas +
           "}\n}\nvalueParm Dial\n{\nkeys\n{\n" + dialKeys + "}\n}\nrotateX xrot\n{\nkeys\n{\n" + turnKeys +
           "}\n}\n}\n}\n}\n";
}

const QByteArray kDeltas = "d 0 0.001234 -0.002 0.5\n"
                           "\t\td  1\t 12345.678901   -1e-3 +.5\n" // odd spacing, long and exponent forms
                           "d 2 0.1 1.2.3 0.3 0.4 extra\n"         // words after the numbers are not read
                           "d 3 abc 2 -0.\n"                       // text that is no number reads as 0
                           "* a comment\n"
                           "dx 4 1 1 1\n" // a delta line too
                           "d 9 1 1 1\n"  // beyond the vertices: dropped with a message
                           "d -1 1 1 1\n"
                           "d 123456789 1 1 1\n"
                           "d 0000000005 7 8 9\r\n" // ten digits; a CR before the end of line
                           "d 6 1234567 .0000001 9999999.\n"
                           "d 7 -12345678 1 5" +
                           QByteArray(" w").repeated(300) + "\n"; // more words than the tokenizer keeps

const QByteArray kDialKeys = "k 0 10\nk 10 20\nk 3\nk -2 1\nk 40 nan\nk 50 1e39\nk 5 2\n";
const QByteArray kTurnKeys =
    "k 0 1\n\tk  10\t2.5 extra\nlin\nk 20 -3\n sl 1\nspl\nsm\nk 30 4\ncon\nkx 40 5\n* star\nk 50 0.000001\n";

struct Variant {
    bool fastPaths;
    size_t chunkSize;
};

class FastLines : public PoserTest, public ::testing::WithParamInterface<Variant> {
protected:
    void TearDown() override {
        poser::readTuning() = poser::ReadTuning();
        PoserTest::TearDown();
    }
    // Reads `text` with the given reader variant; returns the new top node's deltas (bits), keys and
    // the log, with the file's path taken out.
    QString readWith(Variant v, const QString &name, const QByteArray &text) {
        poser::readTuning() = {v.fastPaths, v.chunkSize};
        OvApp::clearLog();
        const int first = scene()->getNumNodes();
        read(name, text);
        QString out = logText().replace(path, "FILE");
        OvNode *node = scene()->getNumNodes() > first ? scene()->getNode(first) : nullptr;
        const OvObject *object = node ? node->getObject() : nullptr;
        for (int m = 0; object && m < object->getNumModifiers(); ++m)
            if (auto *morph = dynamic_cast<OvMorph *>(object->getModifier(m)))
                for (int i = 0; i < morph->getDeltas()->getNumDeltas(); ++i) {
                    const OvVec3 d = morph->getDeltas()->getOffset(i);
                    out += QString::asprintf("\n%d %08x %08x %08x", morph->getDeltas()->getIndex(i),
                                             floatBits(d[0]), floatBits(d[1]), floatBits(d[2]));
                }
        for (const OvProperty *p : {node ? node->findProperty("Dial") : nullptr,
                                    node ? static_cast<OvProperty *>(node->getXRotControl()) : nullptr}) {
            const auto *f = dynamic_cast<const OvFloatProperty *>(p);
            for (int i = 0; f && i < f->getNumKeys(); ++i)
                out += QString::asprintf("\n%d %08x %d", f->getKeyTime(i), floatBits(f->getKeyValue(i)),
                                         int(f->getKeyInterpolation(i)));
        }
        return node ? out.replace(node->getName(), "NODE") : out;
    }
    static float deltaX(const OvNode *node, int i) { return deltasOf(node)->getOffset(i)[0] / 243.84f; }
    static const OvMorphDeltas *deltasOf(const OvNode *node) {
        return dynamic_cast<OvMorph *>(node->getObject()->getModifier(0))->getDeltas();
    }
};

TEST_P(FastLines, GiveWhatTheTokenizedLinesGive) {
    const QByteArray text = prop(kDeltas, kDialKeys, kTurnKeys);
    const QString got = readWith(GetParam(), "a.pz3", text);
    const QString want = readWith({false, 0}, "b.pz3", text);
    EXPECT_EQ(got, want);

    // What both give, in the readable units of the file.
    OvNode *box = scene()->getNode(0);
    const OvMorphDeltas *d = deltasOf(box);
    ASSERT_EQ(d->getNumDeltas(), 8) << got.toStdString();
    const float xs[] = {0.001234f, 12345.678901f, 0.1f, 0, 1, 7, 1234567, -12345678};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(d->getIndex(i), i);
        EXPECT_NEAR(deltaX(box, i), xs[i], std::abs(xs[i]) * 1e-6f) << i;
    }
    EXPECT_NEAR(d->getOffset(1)[1] / 243.84f, -0.001f, 1e-9f);
    EXPECT_NEAR(d->getOffset(6)[1] / 243.84f, 1e-7f, 1e-13f);
    EXPECT_EQ(d->getOffset(3)[2], -0.0f);
    EXPECT_TRUE(std::signbit(d->getOffset(3)[2])) << "\"-0.\" keeps its sign";
    for (const char *message :
         {"Delta of vertex 9 dropped", "Delta of vertex -1 dropped", "Delta of vertex 123456789 dropped",
          "1 line(s) with more than 256 words lost the rest, the first on line 34",
          "Not enough values specified to define a key on line 43", "Key frame -2 lies outside",
          "no finite number"})
        EXPECT_TRUE(got.contains(message)) << message << "\n" << got.toStdString();
    // Transform keys show their interpolation: spline 2, linear 0, constant 1.
    QStringList turns;
    const OvFloatProperty *x = box->getXRotControl();
    for (int i = 0; i < x->getNumKeys(); ++i)
        turns << QStringLiteral("%1:%2:%3")
                     .arg(x->getKeyTime(i) / 160)
                     .arg(double(x->getKeyValue(i)))
                     .arg(int(x->getKeyInterpolation(i)));
    EXPECT_EQ(turns.join(' '), "0:1:2 10:2.5:0 20:-3:2 30:4:1 40:5:2 50:1e-06:2");
    EXPECT_EQ(box->findProperty("Dial")->getNumKeys(), 4) << "0, 5, 10 and 40";
}

TEST_P(FastLines, AShortDeltaLineStopsTheRead) {
    // Before it, a batch of lines of one precision, a line of the general path that ends it, and a
    // batch of mixed precisions.
    const QByteArray text = prop("d 0 0.125 -0.500 0.001\nd 1 0.250 0.375 -0.999\nd 2 1e0 1 1\n"
                                 "d 3 0.125 -0.5 0.001\nd 4 0.25 0.375 -0.999\nd 5 0.1 0.2\nd 6 1 1 1\n",
                                 "", "");
    const QString got = readWith(GetParam(), "a.pz3", text);
    EXPECT_EQ(got, readWith({false, 0}, "b.pz3", text));
    EXPECT_TRUE(got.contains("Insufficient delta values supplied on line 28")) << got.toStdString();
    EXPECT_EQ(deltasOf(scene()->getNode(0))->getNumDeltas(), 5);
}

INSTANTIATE_TEST_SUITE_P(Readers, FastLines,
                         ::testing::Values(Variant{true, 0}, Variant{false, 0}, Variant{true, 3},
                                           Variant{false, 3}),
                         [](const ::testing::TestParamInfo<Variant> &info) {
                             return std::string(info.param.fastPaths ? "InPlace" : "Tokenized") +
                                    (info.param.chunkSize ? "InTinyChunks" : "");
                         });

// Random text of the characters numbers are made of, and some others, placed at the end of a line
// and before a blank: the short scanners take what the general ones take, with the same results.
TEST(ShortScan, AgreesWithTheGeneralScannersOnAnyText) {
    for (int c = 0; c < 256; ++c)
        ASSERT_EQ(text::swar::blank(char(c)), text::isBlank(char(c))) << c;
    std::mt19937 rng(7);
    const char alphabet[] = "0123456789000000000.-+ \tx\x7f\xff";
    for (int n = 0; n < 300000; ++n) {
        std::string token;
        for (int i = int(rng() % 12); i > 0; --i)
            token += alphabet[rng() % (sizeof alphabet - 1)];
        for (const std::string tail : {"", " 1"}) {
            const std::string line = "        " + token + tail; // eight blanks: eight bytes to read
            const char *p = line.c_str() + 8, *last = line.c_str() + line.size();
            float plain = 0, fast = 0;
            int32_t plainDivisions = 0, fastDivisions = 0;
            const char *want = text::scanPlainFloat(p, last, plain, plainDivisions);
            const char *got = text::scanShortFloat(p, last, fast, fastDivisions);
            ASSERT_EQ(got, want) << "\"" << token << "\"";
            // With slack past the line, digits there change nothing.
            const std::string slack = line + std::string(1, '\0') + "9999999";
            const char *sp = slack.c_str() + 8, *slast = slack.c_str() + line.size();
            float slackValue = 0;
            int32_t slackDivisions = 0;
            const char *slackEnd = text::scanShortFloat<true>(sp, slast, slackValue, slackDivisions);
            ASSERT_EQ(slackEnd ? slackEnd - sp : -1, got ? got - p : -1) << "\"" << token << "\"";
            if (got) {
                ASSERT_EQ(floatBits(slackValue), floatBits(fast)) << "\"" << token << "\"";
                ASSERT_EQ(slackDivisions, fastDivisions) << "\"" << token << "\"";
            }
            int slackInt = -1;
            const char *slackIntEnd = text::scanShortInt<true>(sp, slast, slackInt);
            if (want) {
                ASSERT_EQ(floatBits(fast), floatBits(plain)) << "\"" << token << "\"";
                ASSERT_EQ(fastDivisions, plainDivisions) << "\"" << token << "\"";
            }
            // An int: an optional minus and one to nine digits before a blank.
            const char *q = p + (*p == '-');
            const size_t digits = std::strspn(q, "0123456789");
            const bool isInt = digits >= 1 && digits <= 9 && text::isBlank(q[digits]);
            int value = -1;
            const char *end = text::scanShortInt(p, last, value);
            ASSERT_EQ(end, isInt ? q + digits : nullptr) << "\"" << token << "\"";
            ASSERT_EQ(slackIntEnd ? slackIntEnd - sp : -1, end ? end - p : -1) << "\"" << token << "\"";
            if (isInt) {
                ASSERT_EQ(value, std::atoi(p)) << "\"" << token << "\"";
                ASSERT_EQ(slackInt, value) << "\"" << token << "\"";
            }
            const char *skipped = text::skipBlanks(line.c_str(), last);
            ASSERT_EQ(text::skipBlanks<true>(slack.c_str(), slast) - slack.c_str(), skipped - line.c_str());
            const char *blank = line.c_str();
            while (blank < last && text::isBlank(*blank))
                ++blank;
            ASSERT_EQ(skipped, blank) << "\"" << token << "\"";
        }
    }
}

} // namespace
