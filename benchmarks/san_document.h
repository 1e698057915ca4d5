// What the SAN tool prints for a machine of a given size.
#pragma once

#include <string>

// Every LUN is short of space and lies on one of the volumes, which have room enough.
inline std::string SanDocument(long luns, long volumes) {
  std::string text = "{\n  \"low_capacity_write_on\": false,\n  \"luns\": [";
  for (long i = 0; i < luns; ++i)
    text += std::string(i > 0 ? "," : "") + "\n    {\"name\": \"lun-" + std::to_string(i) +
            "\", \"status\": \"low_space\", \"location\": \"/volume" +
            std::to_string(i % volumes + 1) + "\"}";
  text += "\n  ],\n  \"volumes\": [";
  for (long i = 0; i < volumes; ++i)
    text += std::string(i > 0 ? "," : "") + "\n    {\"path\": \"/volume" + std::to_string(i + 1) +
            "\", \"free_size\": 900000000000, \"total_size\": 4000000000000}";
  return text + "\n  ]\n}\n";
}
