#include "session/compression.h"

#include <new>
#include <stdexcept>
#include <string>

#ifdef MORVALE_HAS_ZSTD
#include <zstd.h>
#endif

namespace morvale::session {

#ifdef MORVALE_HAS_ZSTD

namespace {

size_t checked(size_t result) {
  if (ZSTD_isError(result))
    throw std::runtime_error(std::string("is damaged (") + ZSTD_getErrorName(result) + ")");
  return result;
}

}  // namespace

struct Compressor::Context {
  explicit Context(int chosen) : level(chosen), zstd(ZSTD_createCCtx()) {
    if (zstd == nullptr) throw std::bad_alloc();
  }
  ~Context() { ZSTD_freeCCtx(zstd); }
  int level;
  ZSTD_CCtx* zstd;
};

Compressor::Compressor(int level) : context_(std::make_unique<Context>(level)) {}

bool Compressor::available() { return true; }

std::vector<uint8_t> Compressor::compress(std::span<const uint8_t> bytes) {
  std::vector<uint8_t> piece(ZSTD_compressBound(bytes.size()));
  piece.resize(checked(ZSTD_compressCCtx(context_->zstd, piece.data(), piece.size(), bytes.data(),
                                         bytes.size(), context_->level)));
  return piece;
}

std::vector<uint8_t> decompress(std::span<const uint8_t> piece, uint64_t most) {
  const unsigned long long size = ZSTD_getFrameContentSize(piece.data(), piece.size());
  if (size == ZSTD_CONTENTSIZE_ERROR || size == ZSTD_CONTENTSIZE_UNKNOWN)
    throw std::runtime_error("is no compressed file that names its size");
  if (size > most)
    throw std::runtime_error("holds " + std::to_string(size) + " bytes, more than the " +
                             std::to_string(most) + " that it may");
  std::vector<uint8_t> bytes(size);
  if (checked(ZSTD_decompress(bytes.data(), bytes.size(), piece.data(), piece.size())) != size)
    throw std::runtime_error("is damaged: it holds less than its head names");
  return bytes;
}

#else

struct Compressor::Context {};

Compressor::Compressor(int) { throw std::runtime_error("this build compresses nothing"); }

bool Compressor::available() { return false; }

std::vector<uint8_t> Compressor::compress(std::span<const uint8_t>) { return {}; }

std::vector<uint8_t> decompress(std::span<const uint8_t>, uint64_t) {
  throw std::runtime_error("is compressed; this build was made without Zstandard");
}

#endif

Compressor::~Compressor() = default;

}  // namespace morvale::session
