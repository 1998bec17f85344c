// Compresses what the tests give the readers.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

namespace sensorvela::testing {

/// One gzip member.
inline std::string Gzipped(std::string text) {
  std::string gzip(text.size() + 1000, '\0');
  z_stream zlib = {};
  zlib.next_in = reinterpret_cast<Bytef*>(text.data());
  zlib.avail_in = static_cast<uInt>(text.size());
  zlib.next_out = reinterpret_cast<Bytef*>(gzip.data());
  zlib.avail_out = static_cast<uInt>(gzip.size());
  deflateInit2(&zlib, Z_BEST_SPEED, Z_DEFLATED, 16 + MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY);
  EXPECT_EQ(deflate(&zlib, Z_FINISH), Z_STREAM_END);
  gzip.resize(gzip.size() - zlib.avail_out);
  deflateEnd(&zlib);
  return gzip;
}

}  // namespace sensorvela::testing
