// The simulator's command line.
#include "simulator/options.h"

#include <getopt.h>

namespace simulator {

const char kUsage[] =
        "usage: mirx-simulator [--profile FILE] [--timeline FILE]\n"
        "\n"
        "Serves vendor.tavro.hardware.mirx.IMirx/default until it is interrupted and prints every\n"
        "request that it receives. Without a binder driver it serves over a socket in the folder\n"
        "that DOV_SERVICE_DIR names.\n"
        "\n"
        "  --profile FILE   what events, scenes and rules set (docs/profiles.md); without it they\n"
        "                   set what the caller sends along\n"
        "  --timeline FILE  writes what is held as a trace for the Perfetto UI or "
        "chrome://tracing\n"
        "  -h, --help       prints this text\n"
        "\n"
        "Exit codes: 0 it was interrupted; 1 it cannot serve; 2 wrong usage.\n";

std::string readOptions(const std::vector<std::string>& args, Options& options) {
    static constexpr option kForms[] = {
            {"profile", required_argument, nullptr, 'p'},
            {"timeline", required_argument, nullptr, 't'},
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
    optind = 0;  // starts over
    // ':' tells a missing value from an unknown option; '+' keeps the words where they are.
    for (int code = 0; (code = getopt_long(argc, argv.data(), "+:h", kForms, nullptr)) != -1;) {
        const std::string word = argv[static_cast<size_t>(optind - 1)];
        switch (code) {
            case 'p': options.profile = optarg; break;
            case 't': options.timeline = optarg; break;
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
