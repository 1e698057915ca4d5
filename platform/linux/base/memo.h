// What a text was parsed into, for as long as the text stays the same.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace linux_platform {

// One object a file, static: tables that every request reads and that hardly ever change.
// Any thread may call.
template <typename Value>
class Memo {
 public:
  std::shared_ptr<const Value> Of(const std::string& text, Value (*parse)(const std::string&)) {
    {
      const std::lock_guard lock(mutex_);
      if (value_ && text == text_) return value_;
    }
    auto value = std::make_shared<const Value>(parse(text));
    const std::lock_guard lock(mutex_);
    text_ = text;
    return value_ = std::move(value);
  }

 private:
  std::mutex mutex_;
  std::string text_;
  std::shared_ptr<const Value> value_;
};

}  // namespace linux_platform
