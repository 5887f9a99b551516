// Writing and reading of the arrays in a part of the table image. No check of what they mean.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>

#include "tables/imageFormat.h"

namespace image {

/// The parts of one table as bytes, before they are placed in a file.
struct Parts {
  std::string guide, bulk;
};

/// Appends the elements to `part`, aligned.
template <class T>
void appendArray(std::string& part, std::span<const T> values) {
  static_assert(std::is_trivially_copyable_v<T>);
  part.resize((part.size() + kAlignment - 1) / kAlignment * kAlignment, '\0');
  if (!values.empty()) part.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
}

template <class T>
void appendValue(std::string& part, const T& value) {
  appendArray(part, std::span<const T>(&value, 1));
}

/// Takes the arrays in the order in which they were appended. An array that reaches beyond the part is empty,
/// and `ok` is false from then on.
class PartReader {
 public:
  explicit PartReader(std::span<const std::byte> part) : left_(part) {}

  template <class T>
  std::span<const T> array(std::size_t count) {
    static_assert(std::is_trivially_copyable_v<T>);
    skip((kAlignment - taken_ % kAlignment) % kAlignment);
    if (!ok_ || count > left_.size() / sizeof(T)) {
      ok_ = false;
      return {};
    }
    const std::span<const T> values(reinterpret_cast<const T*>(left_.data()), count);
    skip(values.size_bytes());
    return values;
  }
  template <class T>
  T value() {
    const std::span<const T> found = array<T>(1);
    return found.empty() ? T{} : found[0];
  }
  bool ok() const { return ok_; }

 private:
  void skip(std::size_t bytes) {
    bytes = bytes < left_.size() ? bytes : left_.size();
    left_ = left_.subspan(bytes);
    taken_ += bytes;
  }

  std::span<const std::byte> left_;
  std::size_t taken_ = 0;
  bool ok_ = true;
};

}  // namespace image
