// Compares several ways to do the same thing, by taking turns.
#include "bench/contest.h"

#include <algorithm>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <memory>

#include <benchmark/benchmark.h>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::string ratioName(const std::string& way) {
    return way + "/";
}

// Runs one contest with one number of threads. All threads start and end each way's part of a
// round together, so a part takes as long as the slowest thread.
void compete(benchmark::State& state, const Contest& contest, int calls, std::barrier<>& barrier) {
    const size_t count = contest.ways.size();
    const int thread = state.thread_index();
    for (const Way& way : contest.ways) way.run(thread);  // binds, and fills the caches
    std::vector<std::vector<double>> times(count);
    size_t round = 0;
    for (auto _ : state) {
        for (size_t turn = 0; turn < count; ++turn) {
            // Each round starts with another way, so that no way always follows the same one.
            const size_t way = (turn + round) % count;
            barrier.arrive_and_wait();
            const auto begin = Clock::now();
            for (int call = 0; call < calls; ++call) contest.ways[way].run(thread);
            barrier.arrive_and_wait();
            const std::chrono::duration<double, std::nano> time = Clock::now() - begin;
            times[way].push_back(time.count() / calls);
        }
        ++round;
    }
    if (thread != 0) return;
    for (size_t way = 0; way < count; ++way) {
        const std::string& name = contest.ways[way].name;
        state.counters[name] = median(times[way]);
        std::vector<double> ratios(times[way].size());
        for (size_t i = 0; i < ratios.size(); ++i) ratios[i] = times[way][i] / times[0][i];
        state.counters[ratioName(name)] = median(ratios);
    }
}

// Prints a row for each contest, and a heading when the ways change.
class TablePrinter : public benchmark::BenchmarkReporter {
  public:
    TablePrinter(const std::vector<Contest>& contests, const Table& table)
        : mContests(contests), mTable(table) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const auto contest = static_cast<size_t>(std::stoul(run.report_label));
            if (mHeading != heading(mContests[contest])) {
                mHeading = heading(mContests[contest]);
                std::printf("\n%s\n", mHeading.c_str());
            }
            std::printf("%-38s %7ld", mContests[contest].name.c_str(),
                        static_cast<long>(run.threads));
            for (const Way& way : mContests[contest].ways) {
                std::printf(" %11.3f", run.counters.at(way.name) / mTable.nanosecondsPerUnit);
            }
            for (size_t i = 1; i < mContests[contest].ways.size(); ++i) {
                std::printf(" %11.3f",
                            run.counters.at(ratioName(mContests[contest].ways[i].name)).value);
            }
            if (mTable.texts) {
                for (const std::string& text : mTable.texts(contest))
                    std::printf(" %11s", text.c_str());
            }
            std::printf("\n");
            std::fflush(stdout);
        }
    }

  private:
    std::string heading(const Contest& contest) const {
        std::string line = "operation";
        line.resize(38, ' ');
        line += " threads";
        const auto add = [&line](const std::string& title) {
            line.append(title.size() < 11 ? 12 - title.size() : 1, ' ').append(title);
        };
        for (const Way& way : contest.ways) add(way.name + " " + mTable.unit);
        for (size_t i = 1; i < contest.ways.size(); ++i) {
            add(contest.ways[i].name + ":" + contest.ways[0].name.substr(0, 4));
        }
        for (const std::string& title : mTable.titles) add(title);
        return line;
    }

    const std::vector<Contest>& mContests;
    const Table& mTable;
    std::string mHeading;
};

}  // namespace

int run(int argc, char** argv, const std::vector<Contest>& contests, Length length,
        const std::vector<int>& threads, const Table& table) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    for (size_t i = 0; i < contests.size(); ++i) {
        for (const int count : threads) {
            const auto barrier = std::make_shared<std::barrier<>>(count);
            benchmark::RegisterBenchmark(contests[i].name.c_str(),
                                         [&contests, i, barrier, length](benchmark::State& state) {
                                             compete(state, contests[i], length.calls, *barrier);
                                             if (state.thread_index() == 0)
                                                 state.SetLabel(std::to_string(i));
                                         })
                    ->Iterations(length.rounds)
                    ->Threads(count);
        }
    }
    TablePrinter printer(contests, table);
    benchmark::RunSpecifiedBenchmarks(&printer);
    return 0;
}

}  // namespace bench
