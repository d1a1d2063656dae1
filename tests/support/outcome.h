// What became of a query that may throw.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

// The number that `query` returns, or what it throws; it may throw what its header says and nothing
// else.
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
