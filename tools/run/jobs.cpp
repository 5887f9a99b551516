// What a command line asks for: one run, or one for every input file, chain and shift list.
#include "run/jobs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "common/files.h"
#include "convert/list_choices.h"

namespace run {

namespace fs = std::filesystem;

namespace {

std::string stemOf(const std::string& input) {
  const std::string stem = input == "-" ? "" : fs::path(input).stem().string();
  return stem.empty() ? "shifts" : stem;
}

std::string titleOf(const std::string& input) {
  return input == "-" ? "standard input" : fs::path(input).filename().string();
}

/// A folder name of letters, digits and a few signs, so that it needs no quotes anywhere.
std::string folderName(const std::string& text) {
  std::string name;
  for (const char c : text) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '_' || c == '-';
    name += plain ? c : '_';
  }
  if (name.empty() || name[0] == '.' || name[0] == '-') name.insert(0, "_");
  return name;
}

/// "list3" for an identifier that is a number only, the identifier itself otherwise.
std::string part(const char* kind, const std::string& id) {
  const bool number = !id.empty() && id.find_first_not_of("0123456789") == std::string::npos;
  return number ? kind + id : id;
}

class Finder {
 public:
  explicit Finder(const tools::Arguments& given) : arguments_(given) {
    all_ = given.has("--all");
    result_.batch = all_ || given.words.size() > 1;
    const std::string fallback =
        given.words.size() > 1 ? "orbeln_results" : stemOf(given.words.front()) + "_orbeln";
    std::error_code error;
    const fs::path folder = fs::absolute(given.value("--output", fallback), error).lexically_normal();
    result_.folder = (folder.has_filename() ? folder : folder.parent_path()).string();  // "dir/" is "dir"
  }

  Jobs run() {
    for (const std::string& input : arguments_.words) {
      if (input != "-" && !canBeRead(input)) return result_;
    }
    for (const std::string& input : arguments_.words) {
      addInput(input);
      if (!result_.error.empty()) return result_;
    }
    if (result_.jobs.empty() && !result_.failed.empty()) {
      for (const std::string& problem : result_.failed) {
        result_.error += (result_.error.empty() ? "" : "\norbeln-run: ") + problem;
      }
    }
    return result_;
  }

 private:
  bool canBeRead(const std::string& input) {
    std::error_code error;
    const fs::file_status status = fs::status(input, error);
    if (!fs::exists(status)) {
      result_.error = input + ": " + (error ? error.message() : "there is no such file");
    } else if (fs::is_directory(status)) {
      result_.error = input + ": this is a folder";
    } else if (fs::is_regular_file(status) && !tools::readTextFile(input).ok) {
      result_.error = input + ": " + tools::readTextFile(input).error;
    }
    return result_.error.empty();
  }

  void addInput(const std::string& input) {
    std::error_code error;
    Job job;
    job.input = input;
    job.title = titleOf(input);
    const bool once = input == "-" || !fs::is_regular_file(input, error);
    tools::FileText text;
    if (once || all_) text = tools::readTextFile(input);
    if ((once || all_) && !text.ok) {
      result_.error = job.title + ": " + text.error;
      return;
    }
    if (once) job.text = std::make_shared<const std::string>(text.text);
    if (all_) {
      addOptions(job, text.text);
    } else {
      for (const char* option : {"--chain", "--list"}) {
        if (arguments_.has(option))
          job.title += std::string(", ") + (option + 2) + " " + arguments_.value(option);
      }
      addJob(job, stemOf(input));
    }
  }

  void addJob(Job job, const std::string& name) {
    std::string unique = folderName(name);
    for (int k = 2; !names_.insert(unique).second; ++k) unique = folderName(name) + "_" + std::to_string(k);
    job.folder = result_.batch ? (fs::path(result_.folder) / unique).string() : result_.folder;
    result_.jobs.push_back(std::move(job));
  }

  convert::Settings settings() const {
    convert::Settings settings;
    settings.format = arguments_.value("--format");
    settings.chain = arguments_.value("--chain");
    settings.list = arguments_.value("--list");
    settings.sequenceFile = arguments_.value("--sequence");
    settings.mseAsMet = arguments_.has("--mse-as-met");
    return settings;
  }

  void addOptions(const Job& common, const std::string& text) {
    tools::Log log(common.input == "-" ? "standard input" : common.input);
    std::vector<convert::Option> found;
    if (!convert::listOptions(common.input, text, settings(), found, log)) {
      result_.failed.push_back(tools::describe(log.messages().back()));
      return;
    }
    std::set<std::string> chains, lists;
    for (const convert::Option& option : found) {
      chains.insert(option.chain);
      lists.insert(option.list);
    }
    for (const convert::Option& option : found) {
      Job job = common;
      job.chain = option.chain;
      job.list = option.list;
      std::string name = arguments_.words.size() > 1 || found.size() == 1 ? stemOf(common.input) : "";
      const auto add = [&](const char* kind, const std::string& id) {
        job.title += std::string(", ") + kind + " " + id;
        name += (name.empty() ? "" : "_") + part(kind, id);
      };
      if (chains.size() > 1) add("chain", option.chain);
      if (lists.size() > 1) add("list", option.list);
      addJob(std::move(job), name);
    }
  }

  const tools::Arguments& arguments_;
  bool all_ = false;
  std::set<std::string> names_;
  Jobs result_;
};

}  // namespace

Jobs findJobs(const tools::Arguments& arguments) {
  return Finder(arguments).run();
}

}  // namespace run
