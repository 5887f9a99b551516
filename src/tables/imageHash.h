// Checksum of an image's parts and of table texts: made for speed, not against forgery.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

/// Eight lanes of 64 bits, each word mixed in by exclusive or, an odd multiplication and a rotation. Every
/// step is a bijection of the lane for a given word and of the word for a given lane: bytes that differ
/// inside one word always give another checksum.
class ImageHash {
 public:
  static constexpr std::size_t kBlock = 64;

  /// Call with multiples of kBlock bytes; only the last call may have another length.
  void add(std::span<const std::byte> bytes) {
    length_ += bytes.size();
    auto lanes = lanes_;  // in registers
    std::size_t i = 0;
    for (; i + kBlock <= bytes.size(); i += kBlock) mix(lanes, bytes.data() + i);
    if (i < bytes.size()) {
      std::array<std::byte, kBlock> tail{};
      std::memcpy(tail.data(), bytes.data() + i, bytes.size() - i);
      mix(lanes, tail.data());
    }
    lanes_ = lanes;
  }
  std::uint64_t value() const {
    std::uint64_t sum = length_ * kOdd;
    for (const std::uint64_t lane : lanes_) sum = step(sum, lane);
    return sum ^ sum >> 32;
  }
  static std::uint64_t of(std::span<const std::byte> bytes) {
    ImageHash hash;
    hash.add(bytes);
    return hash.value();
  }

 private:
  static constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U;  // 2^64 / golden ratio
  using Lanes = std::array<std::uint64_t, kBlock / sizeof(std::uint64_t)>;

  static std::uint64_t step(std::uint64_t lane, std::uint64_t word) {
    return std::rotl((lane ^ word) * kOdd, 29);
  }
  static void mix(Lanes& lanes, const std::byte* block) {
    Lanes words;
    std::memcpy(words.data(), block, kBlock);
    for (std::size_t k = 0; k < lanes.size(); ++k) lanes[k] = step(lanes[k], words[k]);
  }

  Lanes lanes_ = {1, 2, 3, 4, 5, 6, 7, 8};
  std::uint64_t length_ = 0;
};
