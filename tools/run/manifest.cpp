// The list of files that orbeln-run made in a folder. Only what stands there unchanged may be replaced.
#include "run/manifest.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>

#include "common/files.h"
#include "tables/text.h"

namespace run {

namespace fs = std::filesystem;

namespace {

constexpr const char* kHeading = "# Files made by orbeln-run";

/// A name in the folder itself: a list must never lead anywhere else.
bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

/// "HASH SIZE NAME"
bool parseLine(const std::string& line, std::string& name, Fingerprint& print) {
  int used = 0;
  if (std::sscanf(line.c_str(), "%16" SCNx64 " %" SCNuMAX " %n", &print.hash, &print.size, &used) != 2)
    return false;
  name = line.substr(static_cast<std::size_t>(used));
  return used > 0 && isPlainName(name);
}

std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return text;
}

}  // namespace

bool fingerprint(const fs::path& file, Fingerprint& result) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(file, error))) return false;
  std::ifstream in(file, std::ios::binary);
  if (!in) return false;
  result = {0, 0xcbf29ce484222325U};
  char buffer[65536];
  while (in.read(buffer, sizeof buffer), in.gcount() > 0) {
    for (std::streamsize i = 0; i < in.gcount(); ++i) {
      result.hash = (result.hash ^ static_cast<unsigned char>(buffer[i])) * 0x100000001b3U;
    }
    result.size += static_cast<std::uintmax_t>(in.gcount());
  }
  return in.eof();
}

bool Manifest::read(const fs::path& folder) {
  files_.clear();
  std::error_code error;
  const fs::path file = folder / kManifestName;
  if (!fs::exists(fs::symlink_status(file, error))) return true;
  const tools::FileText list = tools::readTextFile(file.string());
  if (!list.ok || !list.text.starts_with(kHeading)) return false;
  for (const std::string& line : text::split('\n', list.text)) {
    std::string name;
    Fingerprint print;
    if (!line.starts_with('#') && parseLine(line, name, print)) add(name, print);
  }
  return true;
}

std::string Manifest::write(const fs::path& folder, const std::vector<std::string>& comments) const {
  std::string out = kHeading;
  out +=
      ". It replaces or removes them on its next run here while they are unchanged,\n"
      "# and no others. hash, size, name\n";
  for (const std::string& comment : comments) out += "# " + oneLine(comment) + "\n";
  for (const auto& [name, prints] : files_) {
    for (const Fingerprint& print : prints) {
      char line[64];
      std::snprintf(line, sizeof line, "%016" PRIx64 " %9" PRIuMAX " ", print.hash, print.size);
      out += line + name + "\n";
    }
  }
  return tools::writeTextFile((folder / kManifestName).string(), out);
}

std::vector<std::string> Manifest::names() const {
  std::vector<std::string> all;
  for (const auto& [name, prints] : files_) all.push_back(name);
  return all;
}

bool Manifest::made(const fs::path& folder, const std::string& name) const {
  const auto known = files_.find(name);
  Fingerprint now;
  if (known == files_.end() || !fingerprint(folder / name, now)) return false;
  return std::find(known->second.begin(), known->second.end(), now) != known->second.end();
}

}  // namespace run
