#include "host/http/gzip.h"

#include <zlib.h>

#include <new>
#include <string_view>

namespace host {

std::string Gzip(const std::string& bytes) {
  constexpr int kGzip = 15 + 16;  // the largest window, with gzip's head and sum
  constexpr int kMemory = 9;
  z_stream stream = {};
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kGzip, kMemory, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::bad_alloc();  // nothing else can go wrong with these settings
  }
  std::string packed(deflateBound(&stream, bytes.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  packed.shrink_to_fit();  // it is kept, and was as long as what it packs
  return packed;
}

bool AcceptsGzip(const char* acceptEncoding) {
  if (acceptEncoding == nullptr) return false;
  const std::string_view accepted = acceptEncoding;
  const std::size_t gzip = accepted.find("gzip");
  if (gzip == std::string_view::npos) return false;
  std::string weight(accepted.substr(gzip, accepted.find(',', gzip) - gzip));
  std::erase(weight, ' ');
  return !weight.starts_with("gzip;q=0") || weight.find_first_of("123456789") != weight.npos;
}

}  // namespace host
