#pragma once
// Shared by the benchmarks: wall-clock timing and peak memory measured in a fresh child process.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A field of /proc/self/status in KiB ("VmRSS", "VmHWM"); -1 when it cannot be read.
inline long long statusKiB(const char *field) {
    FILE *f = std::fopen("/proc/self/status", "r");
    if (!f)
        return -1;
    char line[256];
    long long v = -1;
    size_t n = std::strlen(field);
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, field, n) == 0 && line[n] == ':') {
            v = std::atoll(line + n + 1);
            break;
        }
    std::fclose(f);
    return v;
}

// Resets the peak resident size to the current one, so VmHWM afterwards is the peak of what follows.
inline bool resetPeak() {
    int fd = ::open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool ok = ::write(fd, "5", 1) == 1;
    ::close(fd);
    return ok;
}

// Runs this executable again with `args` and returns what it printed (empty on failure).
inline std::string runSelf(const std::vector<std::string> &args) {
    int fds[2];
    if (pipe(fds) != 0)
        return std::string();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        ::close(fds[0]);
        ::close(fds[1]);
        std::vector<char *> argv;
        argv.push_back(const_cast<char *>("bench"));
        for (const std::string &a : args)
            argv.push_back(const_cast<char *>(a.c_str()));
        argv.push_back(nullptr);
        execv("/proc/self/exe", argv.data());
        _exit(127);
    }
    ::close(fds[1]);
    if (pid < 0) {
        ::close(fds[0]);
        return std::string();
    }
    std::string out;
    char chunk[256];
    for (ssize_t n; (n = ::read(fds[0], chunk, sizeof chunk)) > 0;)
        out.append(chunk, size_t(n));
    ::close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? out : std::string();
}

// The shortest of `runs` timings of f().
template <class F> double best(int runs, F &&f) {
    double t = 1e30;
    for (int i = 0; i < runs; ++i) {
        auto start = Clock::now();
        f();
        t = std::min(t, secondsSince(start));
    }
    return t;
}

} // namespace bench
