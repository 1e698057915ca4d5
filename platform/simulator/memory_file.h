// A file that exists only in memory, and may be opened any number of times.
#pragma once

#include <optional>
#include <string>

namespace simulator {

class MemoryFile {
 public:
  MemoryFile() = default;  // no such file
  MemoryFile(const MemoryFile& other) { *this = other.text_; }
  MemoryFile& operator=(const MemoryFile& other) { return *this = other.text_; }
  ~MemoryFile() { reset(); }

  // The file's bytes; none: no such file.
  MemoryFile& operator=(const std::optional<std::string>& text);
  void reset() { *this = std::nullopt; }
  const std::optional<std::string>& Text() const { return text_; }
  bool operator==(const MemoryFile& other) const { return text_ == other.text_; }

  // As open(2) for reading. Readers share one offset: read with pread.
  int Open() const;

 private:
  std::optional<std::string> text_;
  int file_ = -1;
};

}  // namespace simulator
