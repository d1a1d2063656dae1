// From words of the command line to named values, as the tables of the commands say.
#include "dovctl/arguments.h"

#include <algorithm>

#include <getopt.h>

namespace dovctl {
namespace {

// getopt_long gives this for an option's long form, plus its index; above every letter.
constexpr int kFirstLong = 256;
// What it gives for a word that is no option, when asked to keep the order.
constexpr int kWord = 1;

std::string letters(std::span<const Parameter> options, Order order) {
    // ':' tells a missing value from an unknown option.
    std::string text = order == Order::kMixed ? "-:" : "+:";
    for (const Parameter& option : options) {
        if (option.letter == 0) continue;
        text += option.letter;
        if (option.read != nullptr) text += ':';
    }
    // "-12" is to be a positional number. As the option '1' with the attached value "2" it comes
    // back in one piece.
    for (char digit = '0'; digit <= '9'; ++digit) text.append(1, digit).append("::");
    return text;
}

std::vector<option> longForms(std::span<const Parameter> options) {
    std::vector<option> forms;
    for (const Parameter& option : options) {
        forms.push_back({option.name, option.read != nullptr ? required_argument : no_argument,
                         nullptr, kFirstLong + static_cast<int>(forms.size())});
    }
    forms.push_back({nullptr, 0, nullptr, 0});
    return forms;
}

// The option that a result of getopt_long, or optopt, stands for; null if none.
const Parameter* optionOf(std::span<const Parameter> options, int code) {
    if (code >= kFirstLong) return &options[static_cast<size_t>(code - kFirstLong)];
    const auto found = std::find_if(options.begin(), options.end(), [&](const Parameter& option) {
        return option.letter != 0 && option.letter == code;
    });
    return found == options.end() ? nullptr : &*found;
}

std::string describeBadOption(std::span<const Parameter> options, const char* word) {
    if (const Parameter* option = optionOf(options, optopt)) {
        const char* const wrong = option->read != nullptr ? " needs a value" : " takes no value";
        return std::string("--") + option->name + wrong;
    }
    const std::string name = optopt != 0 ? std::string{'-', static_cast<char>(optopt)} : word;
    return "unknown or ambiguous option '" + name + "'";
}

std::string takeValue(const Parameter& parameter, const std::string& shownName,
                      const std::string& text, Arguments& arguments) {
    std::string why;
    std::optional<Value> value = parameter.read(text, why);
    if (!value) return shownName + ": " + why;
    arguments.add(parameter.name, *std::move(value));
    return "";
}

}  // namespace

std::string takeOptions(std::span<const Parameter> options, Order order,
                        const std::vector<std::string>& words, Arguments& arguments,
                        std::vector<std::string>& rest) {
    std::vector<std::string> copies = words;
    std::vector<char*> argv{const_cast<char*>("dovctl")};
    for (std::string& copy : copies) argv.push_back(copy.data());
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);

    const std::string shortForms = letters(options, order);
    const std::vector<option> forms = longForms(options);
    opterr = 0;
    optind = 0;  // starts over, also within an earlier list that was left half-way
    while (true) {
        const int code = getopt_long(argc, argv.data(), shortForms.c_str(), forms.data(), nullptr);
        if (code == -1) break;
        if (code == kWord) {
            rest.emplace_back(optarg);
        } else if (code >= '0' && code <= '9') {
            rest.push_back(std::string{'-', static_cast<char>(code)} +
                           (optarg != nullptr ? optarg : ""));
        } else if (code == '?' || code == ':') {
            return describeBadOption(options, argv[static_cast<size_t>(optind - 1)]);
        } else if (const Parameter& option = *optionOf(options, code); option.read == nullptr) {
            arguments.add(option.name, {});
        } else if (std::string error =
                           takeValue(option, std::string("--") + option.name, optarg, arguments);
                   !error.empty()) {
            return error;
        }
    }
    rest.insert(rest.end(), words.begin() + (optind - 1), words.end());
    return "";
}

std::string takePositionals(std::span<const Parameter> positionals,
                            const std::vector<std::string>& words, Arguments& arguments) {
    size_t next = 0;
    for (const Parameter& positional : positionals) {
        const bool repeats = positional.count == Count::kAny || positional.count == Count::kMany;
        const bool required = positional.count == Count::kOne || positional.count == Count::kMany;
        if (required && next == words.size()) return std::string(positional.name) + " is missing";
        const size_t end = repeats ? words.size() : std::min(next + 1, words.size());
        for (; next < end; ++next) {
            std::string error = takeValue(positional, positional.name, words[next], arguments);
            if (!error.empty()) return error;
        }
    }
    return next < words.size() ? "unexpected argument '" + words[next] + "'" : "";
}

std::string complete(std::span<const Parameter> options, Arguments& arguments) {
    for (const Parameter& option : options) {
        if (arguments.has(option.name)) continue;
        const std::string name = std::string("--") + option.name;
        if (option.count == Count::kOne || option.count == Count::kMany) {
            return name + " is missing";
        }
        if (option.fallback == nullptr) continue;
        std::string error = takeValue(option, name, option.fallback, arguments);
        if (!error.empty()) return error;
    }
    return "";
}

}  // namespace dovctl
