#include "host/http/listen_address.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "host/text/failure.h"

namespace host {
namespace {

TEST(ListenAddress, WhatIsLeftOutIsTheDefaults) {
  for (const auto& [text, host, port] : std::vector<std::tuple<const char*, const char*, int>>{
           {"", "127.0.0.1", 8480},
           {":0", "127.0.0.1", 0},
           {"10.0.0.1", "10.0.0.1", 8480},
           {"[::1]:99", "::1", 99},
           {"[::1]", "::1", 8480},
           {"localhost:65535", "localhost", 65535}}) {
    EXPECT_EQ(ParseListenAddress(text).host, host) << text;
    EXPECT_EQ(ParseListenAddress(text).port, port) << text;
  }
  for (const char* bad : {"1.2.3.4:", "1.2.3.4:65536", "1.2.3.4:8o", "::1:80", "[::1", ":-1"}) {
    EXPECT_THROW(ParseListenAddress(bad), Failure) << bad;
  }
}

TEST(ListenAddress, OnlyLoopbackUnlessAllowed) {
  for (const char* remote : {"0.0.0.0", "::"}) {
    EXPECT_THROW(ListenSocket({remote, 0}, false), Failure) << remote;
    EXPECT_NO_THROW(ListenSocket({remote, 0}, true)) << remote;
  }
  const ListenSocket socket({"127.0.0.2", 0}, false);
  EXPECT_EQ(socket.Url().rfind("http://127.0.0.2:", 0), 0U);
}

}  // namespace
}  // namespace host
