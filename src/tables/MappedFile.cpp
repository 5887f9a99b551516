// A file mapped for reading, whose pages all processes share, and that may change or shrink meanwhile.
#include "tables/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

namespace {

/// What the signal handler knows of a mapping. A handler sees nothing but what is kept outside of any object.
struct Guarded {
  std::atomic<bool> taken{false};
  std::atomic<std::uintptr_t> begin{0}, end{0};
  std::atomic<bool> lost{false};
};

constexpr int kSlots = 32;  // networks and database: more than are ever in use
std::array<Guarded, kSlots> guarded;
std::atomic<int> mappings{0};
struct sigaction earlier {};  // written while no mapping exists

/// A page of a guarded mapping is not there any more: zeros take the place of the whole mapping. Any other
/// bus error gets what it would have got.
extern "C" void replaceLostPages(int /*signal*/, siginfo_t* info, void* /*context*/) {
  const int error = errno;
  const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
  for (Guarded& mapping : guarded) {
    const std::uintptr_t begin = mapping.begin, end = mapping.end;
    if (address < begin || address >= end) continue;
    mapping.lost = true;
    void* const start = reinterpret_cast<void*>(begin);  // NOLINT(performance-no-int-to-ptr)
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE;
    if (mmap(start, end - begin, PROT_READ, flags, -1, 0) != MAP_FAILED) {
      errno = error;
      return;  // the instruction is tried again
    }
  }
  sigaction(SIGBUS, &earlier, nullptr);
}

int guard(std::uintptr_t begin, std::uintptr_t end) {
  for (int i = 0; i < kSlots; ++i) {
    Guarded& mine = guarded[static_cast<std::size_t>(i)];
    if (mine.taken.exchange(true)) continue;
    mine.lost = false;
    mine.begin = begin;
    mine.end = end;
    if (mappings++ == 0) {
      struct sigaction action {};
      action.sa_sigaction = replaceLostPages;
      action.sa_flags = SA_SIGINFO;
      sigemptyset(&action.sa_mask);
      sigaction(SIGBUS, &action, &earlier);
    }
    return i;
  }
  return -1;
}

void release(int slot) {
  Guarded& mine = guarded[static_cast<std::size_t>(slot)];
  if (--mappings == 0) sigaction(SIGBUS, &earlier, nullptr);
  mine.begin = mine.end = 0;
  mine.taken = false;
}

std::size_t wholePages(std::size_t bytes) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (bytes + page - 1) / page * page;
}

bool sameTime(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// Within two ticks of the slowest clock that Linux gives files.
bool changedJustNow(const struct stat& status) {
  constexpr double kTicks = 0.02;
  timespec now{};
  if (clock_gettime(CLOCK_REALTIME, &now) != 0) return true;
  const double age = static_cast<double>(now.tv_sec - status.st_ctim.tv_sec) +
                     1e-9 * static_cast<double>(now.tv_nsec - status.st_ctim.tv_nsec);
  return age > -kTicks && age < kTicks;
}

}  // namespace

std::shared_ptr<const MappedFile> MappedFile::open(const std::string& path) {
  const std::shared_ptr<MappedFile> file(new MappedFile);
  file->descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (file->descriptor < 0 || fstat(file->descriptor, &file->status) != 0) return nullptr;
  if (!S_ISREG(file->status.st_mode) || file->status.st_size <= 0) return nullptr;
  if (changedJustNow(file->status)) return nullptr;
  const auto size = static_cast<std::size_t>(file->status.st_size);
  void* const start = mmap(nullptr, size, PROT_READ, MAP_SHARED, file->descriptor, 0);
  if (start == MAP_FAILED) return nullptr;
  file->content = {static_cast<const std::byte*>(start), size};
  const auto begin = reinterpret_cast<std::uintptr_t>(start);
  file->slot = guard(begin, begin + wholePages(size));
  return file->slot >= 0 ? file : nullptr;
}

MappedFile::~MappedFile() {
  if (slot >= 0) release(slot);
  if (!content.empty()) munmap(const_cast<std::byte*>(content.data()), content.size());
  if (descriptor >= 0) close(descriptor);
}

bool MappedFile::intact() const {
  struct stat now {};
  return !guarded[static_cast<std::size_t>(slot)].lost && fstat(descriptor, &now) == 0 &&
         now.st_size == status.st_size && sameTime(now.st_mtim, status.st_mtim) &&
         sameTime(now.st_ctim, status.st_ctim);
}

bool MappedFile::copy(std::size_t offset, std::span<std::byte> target) const {
  while (!target.empty()) {
    const ssize_t got = pread(descriptor, target.data(), target.size(), static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    offset += static_cast<std::size_t>(got);
    target = target.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

void MappedFile::expect([[maybe_unused]] std::span<const std::byte> part) const {
#ifdef MADV_POPULATE_READ
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::size_t before = reinterpret_cast<std::uintptr_t>(part.data()) % page;
  auto* const start = const_cast<std::byte*>(part.data()) - before;
  if (madvise(start, part.size() + before, MADV_POPULATE_READ) != 0) return;  // older kernels: page by page
#endif
}
