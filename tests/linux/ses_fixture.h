// SES pages kept as hexadecimal text, one page a file.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

inline std::vector<std::uint8_t> SesPage(const std::string& name) {
  std::ifstream file(FIXTURES "/ses/" + name + ".hex");
  std::vector<std::uint8_t> bytes;
  for (unsigned byte; file >> std::hex >> byte;) bytes.push_back(static_cast<std::uint8_t>(byte));
  return bytes;
}
