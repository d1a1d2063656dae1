// Compares ways of doing the same thing, in turns.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// One of the ways; `run` gets the number of the calling thread, from 0.
struct Way {
    std::string name;
    std::function<void(int thread)> run;
};

// The ways are taken in turns, round by round, because the machine's speed changes meanwhile: what
// is compared are neighbours in time. The first way is the one that the others are measured
// against.
struct Contest {
    std::string name;
    std::vector<Way> ways;
};

// How long a contest lasts: `rounds` times `calls` calls of each way, on each thread.
struct Length {
    int rounds;
    int calls;
};

// What is printed of the contests: a row for each, with the medians of the ways' times.
struct Table {
    std::string unit;
    double nanosecondsPerUnit;
    // Further columns: their titles, and what gives their texts for a contest (index into those
    // that were registered); called after the contest.
    std::vector<std::string> titles;
    std::function<std::vector<std::string>(size_t contest)> texts;
};

// Runs the contests that the options of Google Benchmark in `argv` select, each with every number
// of threads, and prints the table, with each way's time in relation to the first one's.
//
// Returns the exit code of the program.
int run(int argc, char** argv, const std::vector<Contest>& contests, Length length,
        const std::vector<int>& threads, const Table& table);

}  // namespace bench
