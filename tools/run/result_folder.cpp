// The folder that a run leaves its results in: never half of them, never in place of anything that is not its
// own.
#include "run/result_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "common/files.h"
#include "common/same_file.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLockName = ".orbeln-run.lock";
constexpr int kAttempts = 5;

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// True while the file that is locked is the one of that name: its last owner may have removed it in between.
bool stillThere(int file, const fs::path& path) {
  struct stat held {
  }, named{};
  return fstat(file, &held) == 0 && lstat(path.c_str(), &named) == 0 && held.st_dev == named.st_dev &&
         held.st_ino == named.st_ino;
}

std::string lockedBy(const fs::path& file) {
  const std::string owner = tools::readTextFile(file.string()).text;
  const bool number = !owner.empty() && owner.find_first_not_of("0123456789") == std::string::npos;
  return number ? " (process " + owner + ")" : "";
}

}  // namespace

ResultFolder::ResultFolder(fs::path folder) : folder_(std::move(folder)), work_(folder_ / kWorkName) {}

ResultFolder::~ResultFolder() {
  if (lock_ < 0) return;
  std::error_code ignored;
  fs::remove_all(work_, ignored);
  unlock();
}

void ResultFolder::unlock() {
  std::error_code ignored;
  fs::remove(folder_ / kLockName, ignored);
  close(lock_);
  lock_ = -1;
  // Only empty folders go.
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) fs::remove(*folder, ignored);
}

std::string ResultFolder::make() {
  std::error_code error;
  std::vector<fs::path> missing;
  for (fs::path path = folder_; !path.empty() && !fs::exists(path, error); path = path.parent_path()) {
    missing.insert(missing.begin(), path);
    if (path == path.parent_path()) break;
  }
  for (const fs::path& path : missing) {
    if (fs::create_directory(path, error)) made_.push_back(path);
    if (error) return path.string() + ": the folder cannot be made: " + error.message();
  }
  return fs::is_directory(folder_, error) ? "" : folder_.string() + ": this is no folder";
}

/// The lock ends with the process that holds it, however that ends.
std::string ResultFolder::lock() {
  const fs::path path = folder_ / kLockName;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (file < 0) return folder_.string() + ": cannot be written to: " + std::strerror(errno);
    if (flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
      close(file);
      return folder_.string() + ": another orbeln-run" + lockedBy(path) +
             " works in this folder; wait for it, or give another folder with -o";
    }
    if (stillThere(file, path)) {
      lock_ = file;
      const std::string owner = std::to_string(getpid());
      const bool told = ftruncate(file, 0) == 0 && write(file, owner.data(), owner.size()) > 0;
      return told ? "" : folder_.string() + ": cannot be written to: " + std::strerror(errno);
    }
    close(file);
  }
  return folder_.string() + ": cannot be locked";
}

std::string ResultFolder::open() {
  std::error_code ignored;
  std::string problem = make();
  if (problem.empty()) problem = lock();
  if (!problem.empty()) {
    if (lock_ < 0) {
      for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) fs::remove(*folder, ignored);
    }
    return problem;
  }
  fs::remove_all(work_, ignored);  // of a run that was killed: the lock says that nobody works there
  std::error_code error;
  if (!fs::create_directory(work_, error)) {
    return work_.string() + ": the folder cannot be made" + (error ? ": " + error.message() : "");
  }
  if (manifest_.read(folder_)) return "";
  return (folder_ / kManifestName).string() +
         ": is no list of orbeln-run; move it away, or give another folder with -o";
}

std::string ResultFolder::conflict(const std::vector<std::string>& names,
                                   const std::vector<std::string>& inputs) const {
  std::error_code error;
  for (const std::string& name : names) {
    const fs::path file = folder_ / name;
    if (!fs::exists(fs::symlink_status(file, error))) continue;
    if (!tools::overwrittenInput(file.string(), inputs).empty()) {
      return file.string() + ": is an input of this run, which would replace it; give another folder with -o";
    }
    if (!manifest_.made(folder_, name)) {
      return file.string() +
             ": was not made by orbeln-run, or was changed since, and is not replaced; move it away, or "
             "give another folder with -o";
    }
  }
  return "";
}

std::string ResultFolder::publish(const std::vector<std::string>& names,
                                  const std::vector<std::string>& inputs,
                                  const std::vector<std::string>& comments) {
  std::string problem = conflict(names, inputs);
  if (!problem.empty()) return problem;
  // Killed between two renames, a run leaves files that the list of that moment still knows.
  Manifest both = manifest_, now;
  for (const std::string& name : names) {
    Fingerprint print;
    if (!fingerprint(work_ / name, print)) return (work_ / name).string() + ": cannot be read";
    both.add(name, print);
    now.add(name, print);
  }
  problem = both.write(folder_, comments);
  std::error_code error;
  for (const std::string& name : names) {
    if (!problem.empty()) break;
    fs::rename(work_ / name, folder_ / name, error);
    if (error) problem = name + ": " + error.message();
  }
  if (problem.empty()) {
    for (const std::string& name : manifest_.names()) {
      const bool input = !tools::overwrittenInput((folder_ / name).string(), inputs).empty();
      if (!contains(names, name) && !input && manifest_.made(folder_, name))
        fs::remove(folder_ / name, error);
    }
    problem = now.write(folder_, comments);
  }
  return problem.empty() ? "" : folder_.string() + ": " + problem;
}

}  // namespace run
