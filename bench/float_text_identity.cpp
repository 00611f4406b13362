// Proof tool: the scene JSON's float text (formatFloat9) against snprintf's "%.9g", byte for byte.
//
//   float_text_identity [COUNT]     COUNT defaults to 100000000
//
// First every float of at most twelve significant bits at every exponent (where ties of the
// rounding to nine digits lie), then COUNT more: half random bit patterns (every finite float
// equally likely: all magnitudes, subnormals included), half what meshes hold: six-decimal numbers,
// some scaled to host units as the importers scale them. Prints every mismatch (at most 20); exits
// 1 when there was one.
#include <FloatText.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

int main(int argc, char **argv) {
    const long long total = argc > 1 ? std::atoll(argv[1]) : 100000000LL;
    std::mt19937_64 rng(777);
    long long mismatches = 0, compared = 0;
    char want[64], got[64];
    const auto start = std::chrono::steady_clock::now();
    auto check = [&](float v) {
        const int n = std::snprintf(want, sizeof want, "%.9g", double(v));
        const size_t m = formatFloat9(v, got);
        ++compared;
        if ((size_t(n) != m || std::memcmp(want, got, m) != 0) && ++mismatches <= 20)
            std::printf("MISMATCH \"%.*s\", printf gives \"%s\"\n", int(m), got, want);
    };
    for (int e = -149; e <= 127; ++e)
        for (int m = 1; m < 4096; ++m)
            if (const float v = std::ldexp(float(m), e); std::isfinite(v) && v != 0.0f)
                check(v);
    for (long long i = 0; i < total; ++i) {
        float v;
        if (i % 2) {
            const uint32_t bits = uint32_t(rng());
            std::memcpy(&v, &bits, sizeof v);
            if (!std::isfinite(v) || v == 0.0f)
                continue;
        } else {
            const long long units = (long long)(rng() % 20000001) - 10000000; // -10.000000 .. 10.000000
            v = float(units) / 1e6f * (i % 4 ? 243.84f : 1.0f);
            if (v == 0.0f)
                continue;
        }
        check(v);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%lld floats compared with printf's %%.9g in %.1f s: %lld mismatches\n", compared, seconds,
                mismatches);
    return mismatches ? 1 : 0;
}
