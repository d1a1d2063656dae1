// JSON on one line.
#pragma once

#include <string>

#include <json/json.h>

namespace simulator {

inline std::string compact(const Json::Value& json) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, json);
}

}  // namespace simulator
