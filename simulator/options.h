// The simulator's command line.
#pragma once

#include <string>
#include <vector>

namespace simulator {

struct Options {
    bool help = false;
    bool declare = false;
    std::string profile;  // file names; empty for none
    std::string timeline;
    std::vector<std::string> faults;
};

// The output of --help.
std::string usage();

// Reads a command line, without the program's name, into `options`. If an option is given
// twice, the last one counts; faults add up. Returns the error, or an empty text.
// Not thread-safe: getopt has globals.
std::string readOptions(const std::vector<std::string>& args, Options& options);

}  // namespace simulator
