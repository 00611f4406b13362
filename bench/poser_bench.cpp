// Throughput of the Poser read driver (tokenizing and dispatch of every line) against the floor of
// reading the same bytes and counting lines, measured in the same run.
//
//   poser_bench FILE [RUNS]
#include <OvApp.h>
#include <OvTextInputFile.h>
#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <poser/OvPZ3Importer.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double>(b - a).count();
}

// Reads the file in reused 256 KiB pieces and counts newlines.
long long floorRead(const char *path, long long &bytes) {
    int fd = ::open(path, O_RDONLY);
    if (fd < 0)
        return -1;
    std::vector<char> buf(1 << 18);
    long long lines = 0;
    bytes = 0;
    for (;;) {
        ssize_t n = ::read(fd, buf.data(), buf.size());
        if (n <= 0)
            break;
        bytes += n;
        for (const char *p = buf.data(), *e = p + n;
             (p = static_cast<const char *>(memchr(p, '\n', size_t(e - p)))); ++p)
            ++lines;
    }
    ::close(fd);
    return lines;
}

// The host's line reader alone: every line split into tokens.
long long tokenizeOnly(const char *path) {
    OvTextInputFile file(QString::fromLocal8Bit(path), false, true);
    if (!file.open())
        return -1;
    std::unique_ptr<char *[]> argv(new char *[OvTextInputFile::MaxTokens]);
    long long lines = 0;
    int argc = 0;
    while (file.getLine(argv.get(), argc))
        ++lines;
    return lines;
}

template <class F> double best(int runs, F &&f) {
    double t = 1e30;
    for (int i = 0; i < runs; ++i) {
        auto a = Clock::now();
        f();
        t = std::min(t, seconds(a, Clock::now()));
    }
    return t;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: poser_bench FILE.cr2 [RUNS]\n");
        return 2;
    }
    const char *path = argv[1];
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 5;
    long long bytes = 0, lines = floorRead(path, bytes);
    if (lines < 0) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    const double mb = double(bytes) / 1e6;
    double tFloor = best(runs, [&] { floorRead(path, bytes); });
    double tTokens = best(runs, [&] { tokenizeOnly(path); });
    unsigned result = 0;
    double tDriver = best(runs, [&] {
        OvApp::reset();
        OvPZ3Importer importer;
        result = importer.read(QString::fromLocal8Bit(path), OvFileIOSettings());
    });
    std::printf("file %s: %.1f MB, %lld lines; best of %d runs; read result %u, %d log lines\n", path, mb,
                lines, runs, result, int(OvApp::log().size()));
    std::printf("%-26s %10s %10s %12s %9s\n", "stage", "seconds", "MB/s", "lines/s", "vs floor");
    auto row = [&](const char *name, double t) {
        std::printf("%-26s %10.4f %10.1f %12.0f %8.1fx\n", name, t, mb / t, double(lines) / t, t / tFloor);
    };
    row("floor (read + count \\n)", tFloor);
    row("tokenize (getLine)", tTokens);
    row("read driver (dispatch)", tDriver);
    return 0;
}
