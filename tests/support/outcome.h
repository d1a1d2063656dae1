// The outcome of a query that may throw.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

// Returns the number that `query` returns, or the exception that it throws. Catches only the
// exceptions that queries are documented to throw.
template <typename Query>
std::string outcome(Query query) {
    try {
        return std::to_string(query());
    } catch (const std::bad_optional_access&) {
        return "no value";
    } catch (const std::invalid_argument&) {
        return "no number";
    } catch (const std::out_of_range&) {
        return "out of range";
    }
}
