// From words of the command line to named values, as the tables of the commands say.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dovctl/values.h"

namespace dovctl {

enum class Count {
    kOptional,  // once or not at all
    kOne,  // exactly once
    kAny,  // as often as one likes
    kMany,  // at least once
};

// An option or a positional argument.
struct Parameter {
    const char* name = "";  // an option's without its dashes
    char letter = 0;  // an option's short form, if it has one
    const char* placeholder = nullptr;  // what help calls an option's value
    Reader read = nullptr;  // none: an option without a value
    Count count = Count::kOptional;
    const char* fallback = nullptr;  // an option's value when it is not given
    const char* help = "";
    // The values there are, where they can be listed: for completion in a shell.
    std::vector<std::string> (*choices)() = nullptr;
};

// The values of a command's parameters, in the order given. Fallbacks count as given.
class Arguments {
  public:
    // `name` must outlive this object; the tables' names do.
    void add(std::string_view name, Value value) { mValues.emplace_back(name, std::move(value)); }

    bool has(std::string_view name) const {
        for (const auto& [known, value] : mValues) {
            if (known == name) return true;
        }
        return false;
    }

    // T is what the parameter's reader makes.
    template <typename T>
    std::vector<T> all(std::string_view name) const {
        std::vector<T> values;
        for (const auto& [known, value] : mValues) {
            if (known == name) values.push_back(std::get<T>(value));
        }
        return values;
    }

    // The last value given, so that a script can append an option to override an earlier one.
    template <typename T>
    T get(std::string_view name) const {
        const std::vector<T> values = all<T>(name);
        return values.empty() ? T{} : values.back();
    }

  private:
    std::vector<std::pair<std::string_view, Value>> mValues;
};

enum class Order { kOptionsFirst, kMixed };

// Takes the options out of `words` into `arguments`. With kOptionsFirst everything behind the first
// other word is left alone. "--" ends the options. Negative numbers are not taken for options.
//
// Returns what is wrong with the first bad option, or an empty text. `rest` gets the other words.
// Uses getopt's globals: for one thread at a time.
std::string takeOptions(std::span<const Parameter> options, Order order,
                        const std::vector<std::string>& words, Arguments& arguments,
                        std::vector<std::string>& rest);

// Reads `words` as the values of `positionals`, of which only the last may be other than kOne.
// Returns what is wrong, or an empty text.
std::string takePositionals(std::span<const Parameter> positionals,
                            const std::vector<std::string>& words, Arguments& arguments);

// Adds the fallbacks of what was not given. Returns which required option is missing, or an empty
// text.
std::string complete(std::span<const Parameter> options, Arguments& arguments);

}  // namespace dovctl
