// Throughput and peak memory of OvObjImporter::readShape against the floor of reading the same
// bytes and counting lines, all measured in the same run on the same files.
//
//   obj_bench [--runs N] [--no-peers] FILE.obj...   the table
//   obj_bench --peak FILE.obj          one read in this process; prints its memory figures
//
// Each file is also imported into the host scene once and the scene JSON of ovimport --json written
// to /dev/null, best of N runs, with its size and throughput (MB of JSON per second).
//
// Throughput is the best of N runs (medians are printed as well), in wall-clock time and in CPU
// time of the reading thread, which is the steadier figure on a busy machine. Peak memory is measured in a
// fresh child process per file (this binary re-executed with --peak), so that nothing freed by an
// earlier read is reused: the peak resident size during readShape minus the resident size right
// before it, against the bytes of mesh data the read returned.
#include "BenchSupport.h"
#include "ObjPeers.h"

#include <OvApp.h>
#include <OvScene.h>
#include <OvShape.h>
#include <QCoreApplication>
#include <QIODevice>
#include <SceneDump.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <obj/OvObjImporter.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// Wall-clock and CPU time of this thread (user and system) over one piece of work. On a machine
// shared with other jobs the CPU time is the steadier of the two.
struct Times {
    double wall = 0, cpu = 0;
};

double threadCpuSeconds() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) * 1e-9;
}

class Stopwatch {
public:
    Stopwatch() : m_wall(Clock::now()), m_cpu(threadCpuSeconds()) {}
    Times elapsed() const {
        return {std::chrono::duration<double>(Clock::now() - m_wall).count(), threadCpuSeconds() - m_cpu};
    }

private:
    Clock::time_point m_wall;
    double m_cpu;
};

const size_t kFloorPieces[] = {size_t(64) << 10, size_t(256) << 10, size_t(1) << 20};

// Reads the whole file with read() into one reused piece of `piece` bytes and counts newlines.
long long floorRead(const char *path, size_t piece, std::vector<char> &buf) {
    int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    buf.resize(piece);
    long long lines = 0;
    for (;;) {
        ssize_t n = ::read(fd, buf.data(), piece);
        if (n <= 0)
            break;
        const char *p = buf.data(), *e = p + n;
        while ((p = static_cast<const char *>(std::memchr(p, '\n', size_t(e - p))))) {
            ++lines;
            ++p;
        }
    }
    ::close(fd);
    return lines;
}

struct ReadResult {
    unsigned code = 0;
    Times time;
    int vertices = 0, uvs = 0, faces = 0, materials = 0, groups = 0;
    size_t meshBytes = 0;
    unsigned long long digest = 0;
};

// FNV-1a over everything the read produced, so that runs of different builds can be compared.
struct Digest {
    unsigned long long h = 1469598103934665603ULL;
    void add(const void *data, size_t n) {
        const unsigned char *p = static_cast<const unsigned char *>(data);
        for (size_t i = 0; i < n; ++i)
            h = (h ^ p[i]) * 1099511628211ULL;
    }
    void add(int v) { add(&v, sizeof v); }
    void add(const QString &s) {
        add(int(s.size()));
        add(s.constData(), size_t(s.size()) * sizeof(QChar));
    }
};

unsigned long long digestOf(const OvShape &shape, const OvPolyMesh &mesh) {
    Digest d;
    d.add(mesh.getName());
    d.add(mesh.getNumVertices());
    for (int i = 0; i < mesh.getNumVertices(); ++i)
        d.add(mesh.getVertex(i), 3 * sizeof(float));
    const OvMap *uvs = mesh.getUVs();
    d.add(uvs->getNumValues());
    for (int i = 0; i < uvs->getNumValues(); ++i)
        d.add(uvs->getPnt2Value(i), 2 * sizeof(float));
    d.add(mesh.getNumFaces());
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        d.add(mesh.getFaceSize(f));
        d.add(mesh.getFaceMaterial(f));
        for (int c = 0; c < mesh.getFaceSize(f); ++c)
            d.add(mesh.getFaceVertex(f, c));
        for (int c = 0; c < mesh.getFaceSize(f); ++c)
            d.add(mesh.getFaceUV(f, c));
    }
    for (int g = 0; g < mesh.getNumFaceGroups(); ++g) {
        d.add(mesh.getFaceGroupName(g));
        for (int i = 0; i < mesh.getNumFaceGroupFaces(g); ++i)
            d.add(mesh.getFaceGroupFace(g, i));
    }
    for (int m = 0; m < shape.getNumMaterials(); ++m)
        d.add(shape.getMaterial(m)->getName());
    return d.h;
}

ReadResult readOnce(const char *path, bool withDigest) {
    OvApp::reset();
    OvObjImporter importer;
    OvFileIOSettings settings;
    importer.getDefaultOptions(&settings);
    OvShape *shape = nullptr;
    ReadResult r;
    const QString name = QString::fromLocal8Bit(path);
    Stopwatch watch;
    r.code = importer.readShape(name, &shape, settings);
    r.time = watch.elapsed();
    if (shape) {
        if (auto *mesh = dynamic_cast<OvPolyMesh *>(shape->getGeometry())) {
            r.vertices = mesh->getNumVertices();
            r.uvs = mesh->getUVs()->getNumValues();
            r.faces = mesh->getNumFaces();
            r.groups = mesh->getNumFaceGroups();
            r.meshBytes = mesh->dataBytes();
            if (withDigest)
                r.digest = digestOf(*shape, *mesh);
        }
        r.materials = shape->getNumMaterials();
    }
    delete shape;
    return r;
}

// /dev/null as a device that counts the bytes written to it.
class NullSink : public QIODevice {
public:
    NullSink() : m_fd(::open("/dev/null", O_WRONLY | O_CLOEXEC)) { open(QIODevice::WriteOnly); }
    ~NullSink() override { ::close(m_fd); }
    qint64 bytes = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 n) override {
        bytes += n;
        return ::write(m_fd, data, size_t(n));
    }

private:
    int m_fd;
};

// The scene JSON of one import of the file: its size in MB and the best time to write it.
struct JsonStage {
    double mb = 0, seconds = 1e30;
};

JsonStage measureJson(const char *path, int runs) {
    OvApp::reset();
    OvObjImporter importer;
    OvFileIOSettings settings;
    importer.getDefaultOptions(&settings);
    ImportReport report;
    report.result = importer.read(QString::fromLocal8Bit(path), settings);
    JsonStage stage;
    for (int i = 0; i < runs; ++i) {
        NullSink sink;
        Stopwatch watch;
        writeSceneJson(sink, *OvApp::getScene(), report);
        stage.seconds = std::min(stage.seconds, watch.elapsed().wall);
        stage.mb = double(sink.bytes) / 1e6;
    }
    OvApp::reset();
    return stage;
}

using bench::statusKiB;

// Child mode: one read; prints "before_kib peak_kib mesh_bytes wall_s cpu_s method".
int peakMode(const char *path) {
    long long before = statusKiB("VmRSS");
    // Writing 5 to clear_refs resets the peak to the current size; without it the peak since start
    // is used, which is below the resident size before the read anyway for a process this small.
    bool reset = false;
    if (int fd = ::open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC); fd >= 0) {
        reset = ::write(fd, "5", 1) == 1;
        ::close(fd);
    }
    ReadResult r = readOnce(path, false);
    long long peak = statusKiB("VmHWM");
    const char *method = "VmHWM";
    if (peak < 0) {
        struct rusage ru;
        getrusage(RUSAGE_SELF, &ru);
        peak = ru.ru_maxrss;
        method = "ru_maxrss";
    }
    std::printf("%lld %lld %zu %.6f %.6f %s%s\n", before, peak, r.meshBytes, r.time.wall, r.time.cpu, method,
                reset ? "" : "(not reset)");
    return r.code == 0 ? 0 : 1;
}

struct Peak {
    bool ok = false;
    double deltaMB = 0, meshMB = 0;
    Times first; // the read in the fresh process: nothing it allocates was used before
    std::string method;
};

Peak measurePeak(const char *path) {
    Peak p;
    int fds[2];
    if (pipe(fds) != 0)
        return p;
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        ::close(fds[0]);
        ::close(fds[1]);
        char *args[] = {const_cast<char *>("obj_bench"), const_cast<char *>("--peak"),
                        const_cast<char *>(path), nullptr};
        execv("/proc/self/exe", args);
        _exit(127);
    }
    ::close(fds[1]);
    if (pid < 0) {
        ::close(fds[0]);
        return p;
    }
    std::string out;
    char chunk[256];
    for (ssize_t n; (n = ::read(fds[0], chunk, sizeof chunk)) > 0;)
        out.append(chunk, size_t(n));
    ::close(fds[0]);
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    long long before = 0, peak = 0;
    size_t meshBytes = 0;
    char method[64] = {0};
    if (std::sscanf(out.c_str(), "%lld %lld %zu %lf %lf %63s", &before, &peak, &meshBytes, &p.first.wall,
                    &p.first.cpu, method) == 6 &&
        WIFEXITED(wstatus) && WEXITSTATUS(wstatus) == 0) {
        p.ok = true;
        p.deltaMB = double(peak - before) * 1024.0 / 1e6;
        p.meshMB = double(meshBytes) / 1e6;
        p.method = method;
    }
    return p;
}

long long fileSize(const char *path) {
    struct stat st;
    return ::stat(path, &st) == 0 ? (long long)st.st_size : -1;
}

const char *baseName(const char *path) {
    const char *s = std::strrchr(path, '/');
    return s ? s + 1 : path;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

// Best (shortest) and median of a set of runs, in wall-clock and CPU time.
struct RunStats {
    double bestWall, medWall, bestCpu, medCpu;
};

RunStats statsOf(const std::vector<Times> &runs) {
    std::vector<double> wall, cpu;
    for (const Times &t : runs) {
        wall.push_back(t.wall);
        cpu.push_back(t.cpu);
    }
    return {*std::min_element(wall.begin(), wall.end()), median(wall),
            *std::min_element(cpu.begin(), cpu.end()), median(cpu)};
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--peak") == 0)
        return peakMode(argv[2]);

    int runs = 5;
    bool withPeers = true;
    std::vector<const char *> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc)
            runs = std::max(1, std::atoi(argv[++i]));
        else if (std::strcmp(argv[i], "--no-peers") == 0)
            withPeers = false;
        else
            files.push_back(argv[i]);
    }
    if (files.empty()) {
        std::fprintf(
            stderr,
            "usage: obj_bench [--runs N] [--no-peers] FILE.obj...\n       obj_bench --peak FILE.obj\n");
        return 2;
    }

    struct PeerRow {
        const char *name;
        double medianWall;
    };
    struct Row {
        const char *name;
        double mb;
        RunStats floor, read;
        Peak peak;
        std::vector<PeerRow> peers;
        JsonStage json;
    };
    std::vector<Row> rows;
    std::vector<char> buf;
    int status = 0;
    for (const char *path : files) {
        long long size = fileSize(path);
        if (size < 0 || floorRead(path, 1 << 16, buf) < 0) { // also warms the page cache
            std::fprintf(stderr, "cannot read %s\n", path);
            return 1;
        }
        const double mb = double(size) / 1e6;
        std::printf("%s: %.1f MB, %d runs each\n", path, mb, runs);

        // The floor of a file is its fastest piece size.
        RunStats floor{};
        for (size_t piece : kFloorPieces) {
            std::vector<Times> times;
            for (int i = 0; i < runs; ++i) {
                Stopwatch watch;
                floorRead(path, piece, buf);
                times.push_back(watch.elapsed());
            }
            RunStats st = statsOf(times);
            std::printf("  floor, %4zu KiB pieces: best %8.1f MB/s wall, %8.1f MB/s cpu\n", piece >> 10,
                        mb / st.bestWall, mb / st.bestCpu);
            if (floor.bestCpu == 0 || st.bestCpu < floor.bestCpu)
                floor = st;
        }

        // Rounds interleave our reader with the peers, so that a busy moment of the machine hits all.
        const std::vector<bench::ObjPeer> noPeers;
        const std::vector<bench::ObjPeer> &peers = withPeers ? bench::objPeers() : noPeers;
        std::vector<std::vector<double>> peerTimes(peers.size());
        std::vector<bench::PeerResult> peerLast(peers.size());
        std::vector<Times> times;
        ReadResult r;
        for (int i = 0; i < runs; ++i) {
            r = readOnce(path, i == runs - 1);
            times.push_back(r.time);
            for (size_t k = 0; k < peers.size(); ++k) {
                peerLast[k] = peers[k].read(path);
                peerTimes[k].push_back(peerLast[k].seconds);
            }
        }
        if (r.code != 0) {
            std::fprintf(stderr, "readShape of %s returned 0x%x\n", path, r.code);
            status = 1;
        }
        RunStats read = statsOf(times);
        std::printf(
            "  readShape: best %.3f s wall (%.1f MB/s), %.3f s cpu (%.1f MB/s); median %.1f MB/s wall, "
            "%.1f MB/s cpu\n",
            read.bestWall, mb / read.bestWall, read.bestCpu, mb / read.bestCpu, mb / read.medWall,
            mb / read.medCpu);
        std::printf(
            "  mesh: %d vertices, %d uvs, %d faces, %d groups, %d materials; %d log lines; digest %016llx\n",
            r.vertices, r.uvs, r.faces, r.groups, r.materials, int(OvApp::log().size()), r.digest);

        std::vector<PeerRow> peerRows;
        for (size_t k = 0; k < peers.size(); ++k) {
            const bench::PeerResult &pr = peerLast[k];
            if (!pr.ok) {
                std::printf("  %s: could not read the file\n", peers[k].name);
                continue;
            }
            const double med = median(peerTimes[k]);
            const bool same = (pr.vertices < 0 || pr.vertices == r.vertices) &&
                              (pr.uvs < 0 || pr.uvs == r.uvs) && pr.faces == r.faces;
            std::printf("  %s: median %.3f s wall (%.1f MB/s); %lld vertices, %lld uvs, %lld faces (%s)\n",
                        peers[k].name, med, mb / med, pr.vertices, pr.uvs, pr.faces,
                        same ? "same counts" : "counts differ");
            peerRows.push_back({peers[k].name, med});
        }

        Peak p = measurePeak(path);
        if (p.ok)
            std::printf(
                "  first read in a fresh process: %.1f MB/s wall, %.1f MB/s cpu; peak memory (%s): %.1f MB "
                "over %.1f MB of mesh data\n",
                mb / p.first.wall, mb / p.first.cpu, p.method.c_str(), p.deltaMB, p.meshMB);
        else
            std::printf("  fresh process: the child run failed\n");
        const JsonStage json = measureJson(path, runs);
        std::printf("  scene JSON: %.1f MB in %.3f s (%.1f MB/s of JSON)\n", json.mb, json.seconds,
                    json.mb / json.seconds);
        rows.push_back({baseName(path), mb, floor, read, p, peerRows, json});
    }

    std::printf("\n%-10s %6s %9s %9s %7s %9s %9s %8s %8s %6s\n", "", "", "floor", "readShape", "",
                "readShape", "1st read", "peak", "mesh", "");
    std::printf("%-10s %6s %9s %9s %7s %9s %9s %8s %8s %6s\n", "file", "MB", "MB/s", "MB/s", "ratio",
                "cpu MB/s", "MB/s", "MB", "MB", "ratio");
    for (const Row &r : rows) {
        std::printf("%-10s %6.1f %9.1f %9.1f %6.1f%% %9.1f", r.name, r.mb, r.mb / r.floor.bestWall,
                    r.mb / r.read.bestWall, 100.0 * r.floor.bestWall / r.read.bestWall,
                    r.mb / r.read.bestCpu);
        if (r.peak.ok)
            std::printf(" %9.1f %8.1f %8.1f %5.2fx\n", r.mb / r.peak.first.wall, r.peak.deltaMB,
                        r.peak.meshMB, r.peak.meshMB > 0 ? r.peak.deltaMB / r.peak.meshMB : 0.0);
        else
            std::printf(" %9s %8s %8s %6s\n", "-", "-", "-", "-");
    }
    for (const Row &r : rows)
        std::printf("%-10s scene JSON %.1f MB at %.1f MB/s (best of %d, written to /dev/null)\n", r.name,
                    r.json.mb, r.json.mb / r.json.seconds, runs);
    for (const Row &r : rows)
        for (const PeerRow &peer : r.peers)
            std::printf("%-10s readShape is %.2fx the speed of %s (medians of %d interleaved rounds)\n",
                        r.name, peer.medianWall / r.read.medWall, peer.name, runs);
    if (bench::objPeers().empty())
        std::printf("no open peer built in (bench/setup_peers.sh installs tinyobjloader)\n");
    std::printf(
        "MB/s: wall-clock, best of %d runs in this process (cpu: CPU time of the reading thread, best run; "
        "1st read: the one read in a fresh process). floor: read() in reused pieces counting newlines, "
        "fastest piece size. ratio: readShape over the floor. Memory: peak resident size during the read "
        "in the fresh process minus the size before it, over OvPolyMesh::dataBytes() of the mesh.\n",
        runs);
    return status;
}
