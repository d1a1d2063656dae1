// The simulator's command line.
#include "simulator/options.h"

#include <getopt.h>

#include "simulator/fault.h"

namespace simulator {

std::string usage() {
    const std::string usage =
            "usage: mirx-simulator [--declare] [--profile FILE] [--timeline FILE]\n"
            "                      [--fault FAULT]...\n"
            "\n"
            "Serves vendor.tavro.hardware.mirx.IMirx/default until it is interrupted or another\n"
            "simulator takes its place, and prints every request that it receives. Without a\n"
            "binder driver it serves over a socket in the folder DOV_SERVICE_DIR; if that is not\n"
            "set, in tavro-services in XDG_RUNTIME_DIR, else in /tmp/tavro-services-UID.\n"
            "Durations are in milliseconds. What a client acquires is held until it is released\n"
            "or its time runs out, even if the client dies.\n"
            "\n"
            "  --declare        makes that folder and declares the service in it, unless a VINTF\n"
            "                   manifest fragment there does\n"
            "  --profile FILE   what events, scenes and rules set (docs/profiles.md); without it\n"
            "                   they set what the caller sends along\n"
            "  --timeline FILE  writes what is held as a trace for the Perfetto UI\n"
            "  --fault FAULT    misbehaves: WHAT[=HOW][:WHEN[,WHEN...]] (docs/simulator.md)\n"
            "  -h, --help       prints this text\n"
            "\n"
            "What goes wrong:\n";
    return usage + kFaultHelp +
           "\n"
           "WHEN is an operation (request, propertyGet ...), a request kind (event-acquire ...),\n"
           "pid=PID, every=N, times=N or once; without it the fault happens in every call.\n"
           "At run time 'dovctl fault' adds and clears faults.\n"
           "\n"
           "Exit codes: 0 it was interrupted or replaced; 1 it cannot serve; 2 wrong usage.\n";
}

std::string readOptions(const std::vector<std::string>& args, Options& options) {
    static constexpr option kForms[] = {
            {"declare", no_argument, nullptr, 'd'},
            {"profile", required_argument, nullptr, 'p'},
            {"timeline", required_argument, nullptr, 't'},
            {"fault", required_argument, nullptr, 'f'},
            {"help", no_argument, nullptr, 'h'},
            {nullptr, 0, nullptr, 0},
    };
    std::vector<std::string> words = {"mirx-simulator"};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const int argc = static_cast<int>(words.size());

    opterr = 0;
    optind = 0;  // start at the first word
    // ':' tells a missing value from an unknown option; '+' stops at the first other word.
    for (int code = 0; (code = getopt_long(argc, argv.data(), "+:h", kForms, nullptr)) != -1;) {
        const std::string word = argv[static_cast<size_t>(optind - 1)];
        switch (code) {
            case 'd': options.declare = true; break;
            case 'p': options.profile = optarg; break;
            case 't': options.timeline = optarg; break;
            case 'f': options.faults.emplace_back(optarg); break;
            case 'h': options.help = true; break;
            case ':': return word + " needs a value";
            default: return "unknown option '" + word + "'";
        }
    }
    return optind < argc
                   ? std::string("unexpected argument '") + argv[static_cast<size_t>(optind)] + "'"
                   : "";
}

}  // namespace simulator
