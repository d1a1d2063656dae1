// Parses the words of a command line into named values, as the commands' tables say.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dovctl/values.h"

namespace dovctl {

enum class Count {
    kOptional,  // at most once
    kOne,  // exactly once
    kAny,  // any number of times
    kMany,  // at least once
};

// An option or a positional argument.
struct Parameter {
    const char* name = "";  // an option's without its dashes
    char letter = 0;  // an option's short form, if it has one
    const char* placeholder = nullptr;  // the name of an option's value in the help
    Reader read = nullptr;  // null: an option without a value
    Count count = Count::kOptional;
    const char* fallback = nullptr;  // an option's default value
    const char* help = "";
    // The names that it takes, also for completion in a shell; null if they cannot be listed. A
    // text must be one of them.
    std::vector<std::string> (*choices)() = nullptr;

    bool required() const { return count == Count::kOne || count == Count::kMany; }
    bool repeats() const { return count == Count::kAny || count == Count::kMany; }
};

// The values of a command's parameters, in the order given, with the defaults of the others.
class Arguments {
  public:
    // `name` must outlive this object; the tables' names do.
    void add(std::string_view name, Value value) { mValues.emplace_back(name, std::move(value)); }

    bool has(std::string_view name) const {
        return std::any_of(mValues.begin(), mValues.end(),
                           [name](const auto& value) { return value.first == name; });
    }

    // Those of the parameter's values that are a T.
    template <typename T>
    std::vector<T> all(std::string_view name) const {
        std::vector<T> values;
        for (const auto& [known, value] : mValues) {
            const T* match = known == name ? std::get_if<T>(&value) : nullptr;
            if (match != nullptr) values.push_back(*match);
        }
        return values;
    }

    const std::vector<std::pair<std::string_view, Value>>& all() const { return mValues; }

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

// Moves the options among `words` into `arguments` and the other words into `rest`. With
// kOptionsFirst every word after the first that is no option goes to `rest`. "--" ends the options.
// A negative number is no option.
//
// Returns the error in the first bad option, or an empty text. Uses getopt's globals: not
// thread-safe.
std::string takeOptions(std::span<const Parameter> options, Order order,
                        const std::vector<std::string>& words, Arguments& arguments,
                        std::vector<std::string>& rest);

// Reads `words` as the values of `positionals`. Only the last one may be other than kOne.
// Returns what is wrong, or an empty text.
std::string takePositionals(std::span<const Parameter> positionals,
                            const std::vector<std::string>& words, Arguments& arguments);

// Adds the defaults of the options that were not given. Returns which required option is missing,
// or an empty text.
std::string complete(std::span<const Parameter> options, Arguments& arguments);

}  // namespace dovctl
