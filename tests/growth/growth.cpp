// Measures how the time of each work grows with its size, and prints a table for docs/reliability.md. Each
// doubling may cost 2.6 times as much.

#include "tests/growth/works.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

constexpr double allowed = 2.6;
constexpr double shortest = 1e-3; // shorter times show the clock and the caches more than the work

/// Large blocks would otherwise come fresh from the system each time, and cost more than the work with them.
void keepMemory() {
#if defined(__GLIBC__)
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
#endif
}

/// Of this thread, so that other programs disturb little.
double processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// So that a size that fits into the caches, and one that does not, are measured alike.
void emptyCaches() {
    static std::vector<unsigned char> other(std::size_t{384} << 20U); // those of large servers included
    for (std::size_t i = 0; i < other.size(); i += 64) {
        ++other[i];
    }
}

double secondsOf(const std::function<void()>& perform) {
    double seconds[5] = {};
    perform();
    for (double& each : seconds) {
        emptyCaches();
        const double start = processorTime();
        perform();
        each = processorTime() - start;
    }
    std::sort(std::begin(seconds), std::end(seconds));
    return seconds[2];
}

/// Prints a row: the time at the largest size, and the largest of the ratios from size to size. Returns
/// whether all are allowed.
bool printRow(const growth::Work& work, long smallest, long largest) {
    work.prepare(
        smallest)(); // the first objects on a fresh heap lie in a row, later ones where there is room
    double before = 0.0;
    double worst = 0.0;
    double now = 0.0;
    long size = smallest;
    for (;; size *= 2) {
        now = secondsOf(work.prepare(size));
        if (before >= shortest) {
            worst = std::max(worst, now / before);
        }
        before = now;
        if (size * 2 > largest) {
            break;
        }
    }
    std::printf("| %s | %ld | %.2f | %.2f |%s\n", work.name.c_str(), size, now * 1e3, worst,
                worst <= allowed ? "" : " TOO MUCH");
    std::fflush(stdout);
    return worst <= allowed;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const long largest = argumentCount > 1 ? std::atol(arguments[1]) : 1024000; // NOLINT(cert-err34-c)
    const std::string wanted = argumentCount > 2 ? arguments[2] : "";
    try {
        keepMemory();
        std::printf("| Work | Size | Milliseconds | Largest ratio of a doubling |\n|---|---|---|---|\n");
        bool good = true;
        for (const growth::Work& work : growth::works()) {
            if (work.name.find(wanted) != std::string::npos) {
                good = printRow(work, 16000, largest) && good;
            }
        }
        return good ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "growth: %s\n", error.what());
        return 2;
    }
}
