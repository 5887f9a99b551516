// Whole files in and out: reading from a path or standard input, writing without ever leaving half a file.
#include "common/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "common/text_encoding.h"

namespace tools {

namespace fs = std::filesystem;

namespace {

std::string systemError(int code) {
  return std::strerror(code);
}

// More than any shift list or table of this program; an endless pipe must end as well.
constexpr std::size_t kLargestFile = std::size_t{256} << 20;

std::string readStream(std::FILE* stream, std::string& text) {
  char buffer[65536];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, stream)) > 0) {
    if (text.empty()) {
      std::string complaint = binaryComplaint({buffer, count});
      if (!complaint.empty()) return complaint;
    }
    text.append(buffer, count);
    if (text.size() > kLargestFile) return "is larger than 256 MB, which no shift list is";
  }
  return std::ferror(stream) != 0 ? systemError(errno) : std::string();
}

/// The bytes as they are, of a file that this program wrote itself.
std::string readBytes(const std::string& path, std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return systemError(errno);
  const std::string problem = readStream(file, bytes);
  std::fclose(file);
  return problem;
}

std::string writeStream(std::FILE* stream, std::string_view text, bool close) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  const bool finished = (close ? std::fclose(stream) : std::fflush(stream)) == 0;
  return written && finished ? std::string() : systemError(errno);
}

std::string writeDirectly(const std::string& path, std::string_view text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return systemError(errno);
  return writeStream(file, text, true);
}

}  // namespace

FileText readTextFile(const std::string& path) {
  FileText result;
  std::error_code ignored;
  if (path != "-" && fs::is_directory(path, ignored)) {
    result.error = "is a directory";
    return result;
  }
  std::FILE* file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    result.error = systemError(errno);
    return result;
  }
  result.error = readStream(file, result.text);
  if (file != stdin) std::fclose(file);
  result.ok = result.error.empty();
  if (!result.ok) return result;
  Decoded decoded = decodeText(std::move(result.text));
  result.text = std::move(decoded.text);
  result.encoding = std::move(decoded.changes);
  return result;
}

std::string temporaryName(const std::string& path) {
  std::error_code error;
  const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
  return target.string() + ".part" + std::to_string(getpid());
}

std::string moveIntoPlace(const std::string& temporary, const std::string& path) {
  std::error_code error;
  const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
  std::string problem;
  if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
    std::string finished;
    problem = readBytes(temporary, finished);
    if (problem.empty()) problem = writeDirectly(path, finished);
    fs::remove(temporary, error);
    return problem;
  }
  fs::rename(temporary, target, error);
  if (!error) return problem;
  problem = error.message();
  fs::remove(temporary, error);
  return problem;
}

std::string writeTextFile(const std::string& path, std::string_view text) {
  if (path == "-") return writeStream(stdout, text, false);
  std::error_code error;
  if (fs::exists(path, error) && !fs::is_regular_file(path, error)) return writeDirectly(path, text);
  const std::string temporary = temporaryName(path);
  const std::string problem = writeDirectly(temporary, text);
  if (problem.empty()) return moveIntoPlace(temporary, path);
  fs::remove(temporary, error);
  return problem;
}

}  // namespace tools
