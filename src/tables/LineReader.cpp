// Line-wise reading of text files of any size through one growing buffer.
#include "tables/LineReader.h"

#include <cstring>

namespace {
constexpr std::size_t kBlock = std::size_t{1} << 18;  // fits the second-level cache
}

LineReader::LineReader(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {
  if (!file) return;
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // blocks are read straight into `buffer`
  fill();
  // Opening a directory succeeds; only the first read tells.
  if (std::ferror(file.get()) != 0) file.reset();
}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = 0;  // bytes from `begin` known to hold no newline
  while (true) {
    const std::size_t length = end - begin;
    const char* start = buffer.get() + begin;
    const void* newline =
        length > searched ? std::memchr(start + searched, '\n', length - searched) : nullptr;
    if (newline != nullptr) {
      line = {start, static_cast<std::size_t>(static_cast<const char*>(newline) - start)};
      begin += line.size() + 1;
      break;
    }
    searched = length;
    if (fill()) continue;
    if (length == 0) return false;
    line = {buffer.get() + begin, length};  // fill() may have moved the data
    begin = end;
    break;
  }
  ++lineCount;
  return true;
}

/// Appends one block to the unread bytes, moving them to the front; doubles the buffer when a line fills it.
bool LineReader::fill() {
  const std::size_t unread = end - begin;
  if (unread + kBlock > capacity) {
    const std::size_t wanted = capacity == 0 ? kBlock : 2 * capacity;
    auto larger = std::make_unique_for_overwrite<char[]>(wanted + kPadding);
    if (unread > 0) std::memcpy(larger.get(), buffer.get() + begin, unread);
    buffer = std::move(larger);
    capacity = wanted;
  } else if (unread > 0 && begin > 0) {
    std::memmove(buffer.get(), buffer.get() + begin, unread);
  }
  begin = 0;
  end = unread;
  const std::size_t got = file ? std::fread(buffer.get() + end, 1, capacity - end, file.get()) : 0;
  end += got;
  std::memset(buffer.get() + end, '\n', kPadding);  // what follows a last line without newline
  return got > 0;
}
