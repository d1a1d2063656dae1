// Compares several ways to do the same thing, by taking turns.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// One way to do it. `run` gets the number of the calling thread, from 0.
struct Way {
    std::string name;
    std::function<void(int thread)> run;
};

// The ways take turns in each round, because the machine's speed changes meanwhile: only times that
// were measured next to each other are compared. The first way is the reference for the others.
struct Contest {
    std::string name;
    std::vector<Way> ways;
};

// The length of a contest: `rounds` times `calls` calls of each way, on each thread.
struct Length {
    int rounds;
    int calls;
};

// The printed table: a row for each contest, with the median time of each way.
struct Table {
    std::string unit;
    double nanosecondsPerUnit;
    // Further columns: their titles, and a function that returns their texts for the contest with
    // the given index. It is called after the contest.
    std::vector<std::string> titles;
    std::function<std::vector<std::string>(size_t contest)> texts;
};

// Runs the contests that the Google Benchmark options in `argv` select, each with every number of
// threads. Prints the table, with the ratio of each way's time to that of the first way.
//
// Returns the exit code of the program.
int run(int argc, char** argv, const std::vector<Contest>& contests, Length length,
        const std::vector<int>& threads, const Table& table);

}  // namespace bench
