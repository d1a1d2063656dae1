// The simulator's command line.
#pragma once

#include <string>
#include <vector>

namespace simulator {

struct Options {
    bool help = false;
    std::string profile;  // file names; empty for none
    std::string timeline;
};

// What --help prints.
extern const char kUsage[];

// Reads a command line, without the program's name, into `options`; of an option that stands twice
// the last counts. Returns what is wrong with it, or an empty text. Uses getopt's globals: for one
// thread at a time.
std::string readOptions(const std::vector<std::string>& args, Options& options);

}  // namespace simulator
