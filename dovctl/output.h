// Prints results: as tables, or as JSON for programs.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "dovctl/arguments.h"
#include "dovctl/console.h"

namespace Json {
class Value;
}

namespace dovctl {

using Cell = std::variant<std::string, int64_t, bool>;

struct Table {
    std::vector<std::string> columns;
    std::vector<std::vector<Cell>> rows;  // each as long as `columns`
};

// An option of every query.
inline constexpr Parameter kJson{.name = "json", .help = "print JSON"};

// Prints a table: aligned columns under their names, or with --json an array of objects, one line.
void show(Console& console, const Arguments& arguments, const Table& table);

// The lines of a table: its columns' names and its rows, aligned and without control characters.
std::vector<std::string> linesOf(const Table& table);

// Prints a single value: on its own, or with --json as an object with one member.
void show(Console& console, const Arguments& arguments, const std::string& name, const Cell& value);

// Prints each row on a line of its own, without the columns' names, or with --json as an object.
void showLine(Console& console, const Arguments& arguments, const Table& table);

// A value as JSON, on one line, in UTF-8.
std::string written(const Json::Value& json);

}  // namespace dovctl
