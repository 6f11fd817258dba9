#include "report.h"

#include "goals.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <vector>

namespace bench {
namespace {

// Two functions by name and out of line: callgrind's --toggle-collect can count one side alone.
[[gnu::noinline]] void runOurs(const Pair& pair) { pair.ours(); }
[[gnu::noinline]] void runPeer(const Pair& pair) {
    if (pair.peer) pair.peer();
}

/// Of this thread on a processor: what other programs take does not count.
double now() {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double seconds(void (*side)(const Pair&), const Pair& pair) {
    const double start = now();
    side(pair);
    return now() - start;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

enum class Sameness { unknown, same, differs, notExpected };

struct Entry {
    Pair pair;
    Sameness sameness = Sameness::unknown;
};
std::vector<std::unique_ptr<Entry>> entries;

/// Before anything is timed; the library calls a benchmark several times.
void check(Entry& entry) {
    if (entry.sameness != Sameness::unknown) return;
    runOurs(entry.pair);
    runPeer(entry.pair);
    if (!entry.pair.same) entry.sameness = Sameness::notExpected;
    else entry.sameness = entry.pair.same() ? Sameness::same : Sameness::differs;
}

/// Every iteration runs both sides, in alternating order, so that a slow moment of the machine meets both.
void measure(benchmark::State& state, std::size_t index) {
    check(*entries[index]);
    const Pair& pair = entries[index]->pair;
    std::vector<double> ours, peer, ratios;
    bool peerFirst = false;
    for (auto _ : state) {
        double a = 0, b = 0;
        if (peerFirst) b = seconds(runPeer, pair);
        a = seconds(runOurs, pair);
        if (!peerFirst) b = seconds(runPeer, pair);
        if (pair.peerSeconds > 0) b = pair.peerSeconds;
        peerFirst = !peerFirst;
        ours.push_back(a);
        peer.push_back(b);
        ratios.push_back(b / a);
        state.SetIterationTime(a + b);
    }
    state.counters["ours"] = median(ours) / pair.pixels * 1e9;
    state.counters["peer"] = median(peer) / pair.pixels * 1e9;
    state.counters["ratio"] = median(ratios);
    state.counters["rounds"] = static_cast<double>(ratios.size());
    state.counters["index"] = static_cast<double>(index);
}

/// All pages of an operation beside a peer.
struct Summary {
    double logs = 0, oursLogs = 0, peerLogs = 0, least = 1e300, most = 0;
    int count = 0;
    void add(double ratio, double ours, double peer) {
        logs += std::log(ratio);
        oursLogs += std::log(ours);
        peerLogs += std::log(peer);
        least = std::min(least, ratio);
        most = std::max(most, ratio);
        ++count;
    }
    double mean(double sum) const { return std::exp(sum / count); }
};

const Goal* goalOf(const std::string& operation, const std::string& peer) {
    const auto* const goal = std::find_if(std::begin(kGoals), std::end(kGoals),
                                          [&](const Goal& g) { return operation == g.operation && peer == g.peer; });
    return goal == std::end(kGoals) ? nullptr : goal;
}

void printSummary(const std::string& operation, const std::string& peer, const Summary& s) {
    const Goal* const goal = goalOf(operation, peer);
    char wanted[24] = "", verdict[] = "  -";
    if (goal) {
        std::snprintf(wanted, sizeof wanted, goal->least > 0 ? "%.2f (%.1f)" : "%.2f", goal->mean, goal->least);
        std::memcpy(verdict, s.mean(s.logs) >= goal->mean && s.least >= goal->least ? "yes" : "NO ", 3);
    }
    std::printf("| %-24s | %-42s | %8.4f | %8.4f | %6.2f | %5.2f - %-6.2f | %-11s | %s |\n", operation.c_str(),
                peer.c_str(), s.mean(s.oursLogs), s.mean(s.peerLogs), s.mean(s.logs), s.least, s.most, wanted, verdict);
}

const char* remark(Sameness sameness) {
    if (sameness == Sameness::differs) return " [RESULTS DIFFER]";
    return sameness == Sameness::same ? "" : " [another result]";
}

/// A line a pair as it ends, then a line an operation.
class Table : public benchmark::BenchmarkReporter {
public:
    bool allSame = true;

    bool ReportContext(const Context&) override {
        std::printf("%-25s %-17s %9s %9s %7s  %s\n", "operation", "page", "ns/pixel", "peer's", "ratio", "peer");
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const Entry& entry = *entries[static_cast<std::size_t>(run.counters.at("index"))];
            const Pair& pair = entry.pair;
            const double ratio = run.counters.at("ratio");
            std::printf("%-25s %-17s %9.4f %9.4f %6.2fx  %s%s\n", pair.operation.c_str(), pair.page.c_str(),
                        double{run.counters.at("ours")}, double{run.counters.at("peer")}, ratio, pair.peerName.c_str(),
                        remark(entry.sameness));
            std::fflush(stdout);
            allSame = allSame && entry.sameness != Sameness::differs;
            const std::string key = pair.operation + '\n' + pair.peerName;
            if (!summaries_.count(key)) order_.push_back(key);
            summaries_[key].add(ratio, run.counters.at("ours"), run.counters.at("peer"));
        }
    }

    void Finalize() override {
        std::printf(
            "\nNanoseconds a pixel and the peer's time divided by ours, geometric means over the pages, and the goal "
            "for\n"
            "the latter (for each page).\n\n"
            "| %-24s | %-42s | %8s | %8s | %6s | %-14s | %-11s | met |\n|---|---|---|---|---|---|---|---|\n",
            "operation", "peer", "ours", "peer's", "ratio", "of all pages", "goal");
        for (const std::string& key : order_) {
            const std::size_t split = key.find('\n');
            printSummary(key.substr(0, split), key.substr(split + 1), summaries_[key]);
        }
        if (!allSame) std::printf("Some results differ that should not.\n");
    }

private:
    std::map<std::string, Summary> summaries_;
    std::vector<std::string> order_;
};

}  // namespace

void addPair(Pair pair) {
    const std::size_t index = entries.size();
    const std::string name = pair.operation + "/" + pair.page + "/" + pair.peerName;
    entries.push_back(std::make_unique<Entry>(Entry{std::move(pair)}));
    benchmark::RegisterBenchmark(name.c_str(), [index](benchmark::State& state) { measure(state, index); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

bool takeOptions(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    return !benchmark::ReportUnrecognizedArguments(argc, argv);
}

bool runPairs() {
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.allSame;
}

}  // namespace bench
