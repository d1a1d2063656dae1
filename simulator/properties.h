// The service's named properties.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include <android-base/thread_annotations.h>

namespace simulator {

// Any thread may use it.
class Properties {
  public:
    // The library aborts a client that reads a longer value.
    static constexpr size_t kLongest = 255;

    // Returns false, and changes nothing, when the value is too long.
    bool set(const std::string& key, const std::string& value) {
        if (value.size() > kLongest) return false;
        std::lock_guard lock(mMutex);
        mValues[key] = value;
        return true;
    }

    std::string get(const std::string& key, const std::string& fallback) const {
        std::lock_guard lock(mMutex);
        const auto value = mValues.find(key);
        return value == mValues.end() ? fallback : value->second;
    }

    std::map<std::string, std::string> all() const {
        std::lock_guard lock(mMutex);
        return mValues;
    }

  private:
    mutable std::mutex mMutex;
    std::map<std::string, std::string> mValues GUARDED_BY(mMutex);
};

}  // namespace simulator
