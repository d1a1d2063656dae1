// Prints results: as tables, or as JSON for programs.
#include "dovctl/output.h"

#include <algorithm>

#include <json/json.h>

#include "dovctl/text.h"

namespace dovctl {
namespace {

std::string textOf(const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    if (const auto* number = std::get_if<int64_t>(&cell)) return std::to_string(*number);
    return std::get<bool>(cell) ? "yes" : "no";
}

Json::Value jsonOf(const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    if (const auto* number = std::get_if<int64_t>(&cell)) return Json::Int64{*number};
    return std::get<bool>(cell);
}

Json::Value jsonOf(const Table& table, const std::vector<Cell>& row) {
    Json::Value object(Json::objectValue);
    for (size_t i = 0; i < row.size(); ++i) object[table.columns[i]] = jsonOf(row[i]);
    return object;
}

// The last column is not padded, so that no line ends in blanks.
std::string aligned(const std::vector<std::string>& texts, const std::vector<size_t>& widths) {
    std::string line;
    for (size_t i = 0; i < texts.size(); ++i) {
        line += texts[i];
        if (i + 1 < texts.size()) line += std::string(widths[i] - columnsOf(texts[i]) + 2, ' ');
    }
    while (line.ends_with(' ')) line.pop_back();
    return line;
}

std::vector<std::string> textsOf(const std::vector<Cell>& row) {
    std::vector<std::string> texts;
    texts.reserve(row.size());
    for (const Cell& cell : row) texts.push_back(printable(textOf(cell)));
    return texts;
}

}  // namespace

void show(Console& console, const Arguments& arguments, const Table& table) {
    if (arguments.has(kJson.name)) {
        Json::Value array(Json::arrayValue);
        for (const auto& row : table.rows) array.append(jsonOf(table, row));
        console.print(written(array));
        return;
    }
    for (const std::string& line : linesOf(table)) console.print(line);
}

std::vector<std::string> linesOf(const Table& table) {
    std::vector<std::vector<std::string>> rows = {table.columns};
    for (const auto& row : table.rows) rows.push_back(textsOf(row));
    std::vector<size_t> widths(table.columns.size());
    for (const auto& row : rows) {
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    std::vector<std::string> lines;
    lines.reserve(rows.size());
    for (const auto& row : rows) lines.push_back(aligned(row, widths));
    return lines;
}

void show(Console& console, const Arguments& arguments, const std::string& name,
          const Cell& value) {
    if (!arguments.has(kJson.name)) {
        console.print(textOf(value));
        return;
    }
    console.print(written(jsonOf({.columns = {name}, .rows = {}}, {value})));
}

void showLine(Console& console, const Arguments& arguments, const Table& table) {
    for (const auto& row : table.rows) {
        const std::vector<std::string> texts = textsOf(row);
        std::vector<size_t> widths;
        widths.reserve(texts.size());
        for (const std::string& text : texts) widths.push_back(columnsOf(text));
        console.print(arguments.has(kJson.name) ? written(jsonOf(table, row))
                                                : aligned(texts, widths));
    }
}

std::string written(const Json::Value& json) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    writer["emitUTF8"] = true;
    return Json::writeString(writer, json);
}

}  // namespace dovctl
