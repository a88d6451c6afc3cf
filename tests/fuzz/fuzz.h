/// What all fuzz targets share: taking an input apart, and stopping at a finding.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// The one function of each target. Always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// Ends the process when something that must always hold does not. The fuzzer then keeps the input.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", what);
  std::abort();
}

/// An input, taken from its beginning. Bytes missing at its end count as 0.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), left_(size) {}

  bool IsAtEnd() const { return left_ == 0; }
  uint8_t TakeByte() {
    const std::string byte = TakeBytes(1);
    return static_cast<uint8_t>(byte.empty() ? 0 : byte[0]);
  }
  uint32_t TakeNumber() {
    uint32_t number = TakeByte();
    for (const unsigned shift : {8U, 16U, 24U}) number |= uint32_t{TakeByte()} << shift;
    return number;
  }
  /// At most `size` bytes.
  std::string TakeBytes(size_t size) {
    const size_t taken = std::min(size, left_);
    const std::string bytes(reinterpret_cast<const char*>(data_), taken);
    data_ += taken;
    left_ -= taken;
    return bytes;
  }
  std::string TakeRest() { return TakeBytes(left_); }

 private:
  const uint8_t* data_;
  size_t left_;
};
