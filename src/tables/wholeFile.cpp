// A whole file as bytes.
#include "tables/wholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

FileBytes readWholeFile(const std::string& path, bool dashIsStandardInput, std::size_t most) {
  FileBytes result;
  const bool standardInput = dashIsStandardInput && path == "-";
  const int file = standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  std::array<char, 65536> buffer;
  ssize_t count = file < 0 ? -1 : 1;
  while (count > 0 && result.bytes.size() < most) {
    count = read(file, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR)
      count = 1;
    else if (count > 0)
      result.bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  result.ok = count >= 0;
  if (!result.ok) result.error = std::strerror(errno);
  if (file >= 0 && !standardInput) close(file);
  return result;
}
