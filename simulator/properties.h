// The service's named properties.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include <android-base/thread_annotations.h>

namespace simulator {

// Any thread may use it.
class Properties {
  public:
    void set(const std::string& key, const std::string& value) {
        std::lock_guard lock(mMutex);
        mValues[key] = value;
    }

    std::string get(const std::string& key, const std::string& fallback) const {
        std::lock_guard lock(mMutex);
        const auto value = mValues.find(key);
        return value == mValues.end() ? fallback : value->second;
    }

  private:
    mutable std::mutex mMutex;
    std::map<std::string, std::string> mValues GUARDED_BY(mMutex);
};

}  // namespace simulator
