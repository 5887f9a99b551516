// The one way in which tables and other results reach a file: whole, or not at all and with a reason.
#include "tables/OutputFile.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "tables/UnfinishedFiles.h"

namespace {

constexpr int kMostLinks = 40;  // as the kernel follows them
constexpr mode_t kNewFile = 0666, kPermissions = 07777;

std::string reason(int error) {
  return std::strerror(error);
}

/// "folder/" of a path, empty for a bare name.
std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

/// The descriptor that a name like /dev/stdout stands for; -1 for any other name.
int namedDescriptor(const std::string& path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!path.starts_with(folder)) continue;
    int number = -1;
    const char* end = path.data() + path.size();
    const auto [stop, error] = std::from_chars(path.data() + folder.size(), end, number);
    return error == std::errc{} && stop == end ? number : -1;
  }
  return -1;
}

/// A link that somebody else put into a folder where everybody may write is not followed (the rule of
/// fs.protected_symlinks, which not every system has switched on).
bool isForeignTrap(const std::string& link) {
  const std::string folder = folderOf(link);
  struct stat inFolder {
  }, linkItself{};
  if (stat(folder.empty() ? "." : folder.c_str(), &inFolder) != 0) return false;
  if (lstat(link.c_str(), &linkItself) != 0) return false;
  const bool shared = (inFolder.st_mode & S_ISVTX) != 0 && (inFolder.st_mode & S_IWOTH) != 0;
  return shared && linkItself.st_uid != geteuid() && linkItself.st_uid != inFolder.st_uid;
}

/// Follows the symbolic links of the last component of `path`. 0, or the system's error number.
int resolveLinks(std::string& path) {
  for (int links = 0; namedDescriptor(path) < 0; ++links) {
    std::array<char, PATH_MAX> text;
    const ssize_t length = readlink(path.c_str(), text.data(), text.size());
    if (length < 0) return 0;  // no link, or nothing there yet
    if (links == kMostLinks) return ELOOP;
    if (isForeignTrap(path)) return EACCES;
    const std::string next(text.data(), static_cast<std::size_t>(length));
    path = next.starts_with('/') ? next : folderOf(path) + next;
  }
  return 0;
}

/// Random letters and digits of a name that nobody can guess.
std::string randomSuffix() {
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz012345";
  std::array<unsigned char, 16> bytes{};
  if (getentropy(bytes.data(), bytes.size()) != 0) {
    // Only on kernels without a generator; that the name must not exist still holds.
    const std::uint64_t seed = static_cast<std::uint64_t>(std::clock()) << 32 ^
                               static_cast<std::uint64_t>(std::time(nullptr)) ^
                               static_cast<std::uint64_t>(getpid()) << 16;
    std::memcpy(bytes.data(), &seed, sizeof seed);
  }
  std::string suffix;
  for (const unsigned char byte : bytes) suffix += kLetters[byte % kLetters.size()];
  return suffix;
}

/// Errors after which the older file is written directly: its folder takes no new or no other file.
bool allowsInPlace(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

/// Group and mode of the file that is to be replaced. The group first: changing it clears the set-id bits.
void keepMode(int file, mode_t mode, gid_t group) {
  struct stat made {};
  if (fstat(file, &made) == 0 && made.st_gid != group && fchown(file, static_cast<uid_t>(-1), group) != 0) {
    mode &= ~static_cast<mode_t>(S_IRWXG | S_ISGID);  // another group may not gain what the old one had
  }
  if (fchmod(file, mode) != 0) return;  // file systems without modes
}

}  // namespace

std::string writeDescriptor(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return reason(errno);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

OutputFile::OutputFile(const std::string& path) : target(path) {
  if (const int error = resolveLinks(target); error != 0) {
    problem = reason(error);
  } else if (const int number = namedDescriptor(target); number >= 0) {
    openDescriptor(number);
  } else if (target.empty() || target.ends_with('/')) {
    problem = reason(target.empty() ? ENOENT : EISDIR);
  } else {
    openTarget();
  }
}

OutputFile::~OutputFile() {
  if (descriptor >= 0) close(descriptor);
  if (replaced >= 0) close(replaced);
  if (!temporary.empty()) unlink(temporary.c_str());
}

/// What was printed before comes before.
void OutputFile::openDescriptor(int number) {
  std::fflush(number == STDERR_FILENO ? stderr : stdout);
  descriptor = fcntl(number, F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) problem = reason(errno);
}

void OutputFile::openTarget() {
  const int existing = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  struct stat status {};
  if (existing >= 0 && fstat(existing, &status) == 0 && S_ISREG(status.st_mode)) {
    openExisting(existing, status.st_mode & kPermissions, status.st_gid);
  } else if (existing >= 0) {
    descriptor = existing;  // a device or a pipe
  } else if (errno == ENOENT) {
    createBeside();
  } else {
    problem = reason(errno);
  }
}

void OutputFile::openExisting(int existing, unsigned mode, gid_t group) {
  createBeside();
  if (isOpen()) {
    keepMode(descriptor, mode, group);
    replaced = existing;
  } else if (allowsInPlace(errno)) {
    problem.clear();
    descriptor = existing;
    regular = true;
  } else {
    close(existing);
  }
}

/// Leaves errno as `open` set it.
void OutputFile::createBeside() {
  int error = EEXIST;
  for (int attempt = 0; attempt < 10 && error == EEXIST; ++attempt) {
    temporary = folderOf(target) + ".orbeln-" + randomSuffix();
    entry = std::make_unique<unfinished::Entry>(temporary.c_str());
    descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kNewFile);
    if (isOpen()) return;
    error = errno;
    entry.reset();
  }
  temporary.clear();
  problem = reason(error);
  errno = error;
}

std::string OutputFile::finish(std::string_view text) {
  if (!isOpen()) return problem;
  if (!temporary.empty()) return finishBeside(text);
  const int file = std::exchange(descriptor, -1);
  if (regular) return finishInPlace(file, text);
  const std::string error = writeDescriptor(file, text);
  const bool closed = close(file) == 0;
  return !error.empty() || closed ? error : reason(errno);
}

std::string OutputFile::finishBeside(std::string_view text) {
  std::string error = writeDescriptor(descriptor, text);
  // Some file systems tell only now that there was no room.
  if (close(std::exchange(descriptor, -1)) != 0 && error.empty()) error = reason(errno);
  if (error.empty() && std::rename(temporary.c_str(), target.c_str()) != 0) {
    const int renameError = errno;
    error = reason(renameError);
    if (replaced >= 0 && allowsInPlace(renameError)) {
      unlink(temporary.c_str());
      error = finishInPlace(std::exchange(replaced, -1), text);
    }
  }
  if (!error.empty()) unlink(temporary.c_str());
  entry.reset();
  temporary.clear();
  return error;
}

std::string OutputFile::finishInPlace(int file, std::string_view text) {
  std::string error = ftruncate(file, 0) == 0 ? "" : reason(errno);
  entry = std::make_unique<unfinished::Entry>(file);
  if (error.empty()) error = writeDescriptor(file, text);
  if (!error.empty() && ftruncate(file, 0) != 0) error += ", and the file could not be emptied";
  entry.reset();
  if (close(file) != 0 && error.empty()) error = reason(errno);
  return error;
}

WriteOutcome writeWholeFile(const std::string& path, std::string_view text) {
  OutputFile file(path);
  if (!file.isOpen()) return {WriteOutcome::State::NotOpened, file.openError()};
  std::string error = file.finish(text);
  if (error.empty()) return {};
  return {WriteOutcome::State::Incomplete, std::move(error)};
}
