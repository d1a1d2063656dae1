// Parses the words of a command line into named values, as the commands' tables say.
#include "dovctl/arguments.h"

#include <algorithm>

#include <android-base/strings.h>
#include <getopt.h>

#include "dovctl/text.h"

namespace dovctl {
namespace {

// getopt_long returns this plus the option's index for a long form; above every letter.
constexpr int kFirstLong = 256;
// getopt_long returns this for a word that is no option, if asked to keep the order.
constexpr int kWord = 1;

std::string letters(std::span<const Parameter> options, Order order) {
    // With ':', getopt distinguishes a missing value from an unknown option.
    std::string text = order == Order::kMixed ? "-:" : "+:";
    for (const Parameter& option : options) {
        if (option.letter == 0) continue;
        text += option.letter;
        if (option.read != nullptr) text += ':';
    }
    // "-12" is a positional number. Declared as the option '1' with an optional value, it comes
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

// The option of a result of getopt_long or of optopt; null if none.
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
    if (optopt != 0) return "unknown option '-" + std::string(1, static_cast<char>(optopt)) + "'";
    std::vector<std::string> names;
    for (const Parameter& option : options) names.push_back(std::string("--") + option.name);
    const std::string given = word;
    return "unknown or ambiguous option '" + given + "'" +
           didYouMean(given.substr(0, given.find('=')), names);
}

std::string takeValue(const Parameter& parameter, const std::string& shownName,
                      const std::string& text, Arguments& arguments) {
    std::string why;
    std::optional<Value> value = parameter.read(text, why);
    if (!value) return shownName + ": " + why;
    const auto* name = std::get_if<std::string>(&*value);
    if (name != nullptr && parameter.choices != nullptr) {
        const std::vector<std::string> known = parameter.choices();
        if (std::find(known.begin(), known.end(), *name) == known.end()) {
            const std::string closest = didYouMean(*name, known);
            return shownName + ": unknown '" + *name + "'" +
                   (closest.empty() ? "; known are " + android::base::Join(known, " ") : closest);
        }
    }
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
    optind = 0;  // starts over, even if an earlier list was not parsed to its end
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
        if (positional.required() && next == words.size()) {
            return std::string(positional.name) + " is missing";
        }
        const size_t end = positional.repeats() ? words.size() : std::min(next + 1, words.size());
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
        if (option.required()) return name + " is missing";
        if (option.fallback == nullptr) continue;
        std::string error = takeValue(option, name, option.fallback, arguments);
        if (!error.empty()) return error;
    }
    return "";
}

}  // namespace dovctl
