#include "FullHistory.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/Explanation.h"
#include "Model/History/History.h"
#include "Model/Processes/TopStream.h"
#include "Model/Text/Format.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace vantoro {
namespace {

constexpr std::size_t rows = History::processesPerSample;
const DefaultFormatContext context;
const Format format(context);

/// How many samples the cause window holds at this interval follows from its 75 seconds.
void evaluateVerdict(benchmark::State& state) {
    const double intervalSeconds = static_cast<double>(state.range(0)) / 1000;
    History history;
    benchmarks::fill(history, intervalSeconds, 7200, rows);
    for (auto _ : state)
        benchmark::DoNotOptimize(DiagnosisEngine::evaluate(history, format));
    state.counters["ofInterval"] = benchmark::Counter(static_cast<double>(state.iterations()) * intervalSeconds,
                                                      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(evaluateVerdict)->Arg(250)->Arg(2000)->Unit(benchmark::kMicrosecond);

void explainVerdict(benchmark::State& state) {
    History history;
    benchmarks::fill(history, 0.25, 7200, rows);
    const Verdict verdict = DiagnosisEngine::evaluate(history, format);
    for (auto _ : state)
        benchmark::DoNotOptimize(LocalExplainer::explain(history, verdict, history.snapshots().back(), format));
}
BENCHMARK(explainVerdict)->Unit(benchmark::kMicrosecond);

void appendToFullHistory(benchmark::State& state) {
    History history;
    benchmarks::fill(history, 0.25, 7200, rows);
    Snapshot snapshot = history.snapshots().back();
    for (auto _ : state) {
        snapshot.timestamp += 0.25;
        history.append(snapshot);
    }
}
BENCHMARK(appendToFullHistory);

void queryFullHistory(benchmark::State& state) {
    History history;
    benchmarks::fill(history, 0.25, 7200, rows);
    for (auto _ : state) {
        benchmark::DoNotOptimize(history.recent(20));
        benchmark::DoNotOptimize(history.causeWindow(15, 75));
        benchmark::DoNotOptimize(history.lastRampStart(std::nullopt));
    }
}
BENCHMARK(queryFullHistory);

void chartSeriesOfFullHistory(benchmark::State& state) {
    History history;
    benchmarks::fill(history, 0.25, 7200, rows);
    for (auto _ : state)
        benchmark::DoNotOptimize(chartSeries(history));
}
BENCHMARK(chartSeriesOfFullHistory)->Unit(benchmark::kMicrosecond);

void rankSuspects(benchmark::State& state) {
    History history;
    benchmarks::fill(history, 0.25, 7200, rows);
    for (auto _ : state)
        benchmark::DoNotOptimize(rankedSuspects(history));
}
BENCHMARK(rankSuspects)->Unit(benchmark::kMicrosecond);

/// What the allocator has handed out for a full history, its identities included; no time is measured.
void memoryOfHistory(benchmark::State& state) {
    double bytes = 0;
    for (auto _ : state) {
        const std::size_t before = ::mallinfo2().uordblks;
        History history;
        benchmarks::fill(history, 1, static_cast<std::size_t>(state.range(0)), rows);
        bytes = static_cast<double>(::mallinfo2().uordblks - before);
    }
    state.counters["bytes"] = bytes;
}
BENCHMARK(memoryOfHistory)->Arg(1800)->Arg(7200)->Iterations(1)->Unit(benchmark::kMillisecond);

void parseStreamBlock(benchmark::State& state) {
    std::vector<std::string> lines{"Processes: 600 total",
                                   "Load Avg: 1.0, 1.0, 1.0",
                                   "CPU usage: 5.12% user, 10.25% sys, 84.61% idle",
                                   "PhysMem: 15G used (2318M wired, 4107M compressor), 120M unused.",
                                   "",
                                   "PID     COMMAND          %CPU     MEM          POWER USER"};
    for (int row = 0; row < 40; ++row)
        lines.emplace_back("12345   some-command     12.5     123456K      0.0   somebody");
    for (auto _ : state)
        benchmark::DoNotOptimize(parseBlock(lines, 0));
}
BENCHMARK(parseStreamBlock)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vantoro
