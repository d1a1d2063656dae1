// The outcome of a call that may throw.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

// Returns the number that `call` returns, nothing if it returns none, or the exception that it
// throws. Catches only the exceptions that queries are documented to throw.
template <typename Call>
std::string outcome(Call call) {
    try {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            return "";
        } else {
            return std::to_string(call());
        }
    } catch (const std::bad_optional_access&) {
        return "no value";
    } catch (const std::invalid_argument&) {
        return "no number";
    } catch (const std::out_of_range&) {
        return "out of range";
    }
}
