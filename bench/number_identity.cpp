// Proof tool: the fast number path against a literal transcription of the grammar's single-precision
// steps, bit for bit, on random numbers of the shapes real files hold. Each number is read three
// ways: from a line of three numbers as the OBJ reader's fast path reads "v" lines (scanPlainFloat
// in place, then finishFloats on a batch of 16 lines; the general grammar where the scan declines),
// by parsePoserFloats on tokens, and by parsePoserFloat alone. The line scan also checks that the
// Poser readers' short scan (scanShortFloat) gives the plain scan's digits and divisions.
//
//   number_identity [COUNT]     COUNT defaults to 100000000
//
// Prints how many numbers of each shape were compared, how many the plain scan took, and every
// mismatch (at most 20); exits 1 when there was one.
#include "tests/support/NumberReference.h"

#include <text/NumberScan.h>
#include <text/ShortScan.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

enum Shape { Fixed, Integer, Small, LongDigits, Printf, NearLimit, Shapes };
const char *const kShapeNames[Shapes] = {"fixed point (-12.345678)", "integers",
                                         "small (0.000001234)",      "long digit runs (> 2^24)",
                                         "printf %g/%e/%.9g",        "around 2^24 (16777215.5)"};

class Generator {
public:
    explicit Generator(uint64_t seed) : m_rng(seed) {}

    // A number text of the given shape.
    void make(Shape shape, std::string &s) {
        s.clear();
        if (pick(4) == 0)
            s += '-';
        switch (shape) {
        case Fixed: // what exporters write with %.Nf: mostly six decimals, values of any size up to 10^5
            digits(s, pick(6), true);
            s += '.';
            digits(s, pick(3) ? 6 : 1 + pick(9), false);
            break;
        case Integer:
            digits(s, 1 + pick(10), true);
            break;
        case Small:
            s += "0.";
            s.append(pick(12), '0');
            digits(s, 1 + pick(8), false);
            break;
        case LongDigits: { // past the exact integer: the steps round from here on
            const int n = 8 + pick(18), dotAt = pick(n + 1);
            for (int i = 0; i < n; ++i) {
                if (i == dotAt)
                    s += '.';
                s += char('0' + pick(10));
            }
            break;
        }
        case Printf: {
            char buf[64];
            const double v = std::ldexp(double(m_rng() >> 11) / 9007199254740992.0, int(pick(60)) - 30);
            static const char *const formats[] = {"%g", "%e", "%.9g", "%.7f", "%.12g"};
            std::snprintf(buf, sizeof buf, formats[pick(5)], v);
            s += buf;
            break;
        }
        case NearLimit: {
            const long long base = 16777216LL / (pick(2) ? 1 : 10) - 20 + pick(40);
            s += std::to_string(base);
            if (pick(2)) {
                s += '.';
                digits(s, 1 + pick(6), false);
            }
            break;
        }
        case Shapes:
            break;
        }
    }

private:
    int pick(int n) { return int(m_rng() % uint64_t(n)); }
    // n random digits; "0" for n == 0; no leading zero when `leading` is set.
    void digits(std::string &s, int n, bool leading) {
        if (n == 0) {
            s += '0';
            return;
        }
        for (int i = 0; i < n; ++i)
            s += char((leading && i == 0 ? '1' + pick(9) : '0' + pick(10)));
    }
    std::mt19937_64 m_rng;
};

// Scans the numbers of `line` (with a NUL after it) as the OBJ reader's fast path does; numbers it
// declines are read by the general grammar, as the reader's general path would.
long long g_shortMismatches = 0; // numbers the short scan read otherwise than the plain one

void scanLine(const std::string &line, int count, float *values, int32_t *divisions, long long &plain) {
    char padded[text::kMinScanBytes] = {};
    const char *p = line.c_str(), *end = p + line.size();
    if (end - p + 1 < text::kMinScanBytes) {
        std::memcpy(padded, p, line.size());
        end = padded + text::kMinScanBytes - 1; // the NULs after the copy are blanks
        p = padded;
    }
    ++p; // the keyword
    for (int i = 0; i < count; ++i) {
        while (p < end && text::isBlank(*p))
            ++p;
        const char *start = p;
        while (!text::isBlank(*p))
            ++p;
        float shortValue = 0;
        int32_t shortDivisions = 0;
        const char *shortEnd = text::scanShortFloat(start, end, shortValue, shortDivisions);
        if (text::scanPlainFloat(start, end, values[i], divisions[i]) == p) {
            ++plain;
            // The Poser readers' short scan gives the plain scan's digits and divisions.
            if (shortEnd != p || floatBits(shortValue) != floatBits(values[i]) ||
                shortDivisions != divisions[i])
                ++g_shortMismatches;
        } else {
            values[i] = parsePoserFloat(std::string(start, p).c_str());
            divisions[i] = 0;
        }
    }
}

struct Tally {
    long long compared = 0, plain = 0;
};

} // namespace

int main(int argc, char **argv) {
    const long long total = argc > 1 ? std::atoll(argv[1]) : 100000000LL;
    const int kBatch = 48; // as many numbers as the OBJ reader divides at once
    Generator gen(20240611);
    std::vector<std::string> texts(kBatch);
    std::vector<float> values(kBatch), batched(kBatch), lineWise(kBatch);
    std::vector<int32_t> divisions(kBatch);
    std::string line;
    std::vector<const char *> tokens(kBatch);
    Tally tally[Shapes];
    long long mismatches = 0;
    const auto start = std::chrono::steady_clock::now();
    auto report = [&](const char *how, const std::string &text, float got, float want) {
        if (++mismatches <= 20)
            std::printf("MISMATCH (%s) \"%s\": %08x, steps give %08x\n", how, text.c_str(), floatBits(got),
                        floatBits(want));
    };
    for (long long done = 0; done < total; done += kBatch) {
        // One shape per batch, as a file holds runs of numbers of one kind; weights favour fixed point.
        static const Shape weighted[] = {Fixed,   Fixed, Fixed,      Fixed,  Fixed,
                                         Integer, Small, LongDigits, Printf, NearLimit};
        const Shape shape = weighted[(done / kBatch) % 10];
        for (int i = 0; i < kBatch; ++i) {
            gen.make(shape, texts[i]);
            tokens[i] = texts[i].c_str();
        }
        for (int i = 0; i < kBatch; i += 3) {
            line = "v " + texts[i] + " " + texts[i + 1] + " " + texts[i + 2];
            scanLine(line, 3, values.data() + i, divisions.data() + i, tally[shape].plain);
        }
        text::finishFloats(values.data(), divisions.data(), kBatch, batched.data());
        parsePoserFloats(tokens.data(), kBatch, lineWise.data());
        for (int i = 0; i < kBatch; ++i) {
            const float want = referenceNumber(tokens[i]);
            if (floatBits(batched[i]) != floatBits(want))
                report("line scan + finishFloats", texts[i], batched[i], want);
            if (floatBits(lineWise[i]) != floatBits(want))
                report("parsePoserFloats", texts[i], lineWise[i], want);
            const float single = parsePoserFloat(tokens[i]);
            if (floatBits(single) != floatBits(want))
                report("parsePoserFloat", texts[i], single, want);
        }
        tally[shape].compared += kBatch;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    long long compared = 0;
    for (int s = 0; s < Shapes; ++s) {
        std::printf("%-28s %12lld numbers, %12lld by the plain scan\n", kShapeNames[s], tally[s].compared,
                    tally[s].plain);
        compared += tally[s].compared;
    }
    std::printf("%lld numbers compared three ways (batched, per line, one by one) with the step-by-step "
                "reference in %.1f s: %lld mismatches\n",
                compared, seconds, mismatches);
    std::printf("short scan against the plain scan: %lld mismatches\n", g_shortMismatches);
    return mismatches || g_shortMismatches ? 1 : 0;
}
