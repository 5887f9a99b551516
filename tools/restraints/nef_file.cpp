// The user's own NEF file, to which a restraint list is added.
#include "restraints/nef_file.h"

#include <filesystem>

#include "common/files.h"
#include "common/residue_variants.h"
#include "convert/star.h"
#include "predictions/names.h"
#include "tables/text.h"

namespace restraints {

namespace {

/// Whether more than one data block begins in `text`, passing over text blocks.
bool hasSeveralBlocks(const std::string& text) {
  int blocks = 0;
  bool inText = false;
  for (const std::string& line : text::split('\n', text)) {
    if (line.starts_with(';')) inText = !inText;
    blocks += !inText && line.starts_with("data_") ? 1 : 0;
  }
  return blocks > 1;
}

/// The type that stands behind a residue name of the file; X for one that is not known.
std::string plainType(const std::string& name) {
  const tools::ResidueVariant* variant = tools::findResidueVariant(name);
  return predictions::threeLetterName(variant == nullptr ? 'X' : variant->parent);
}

}  // namespace

std::optional<NefFile> NefFile::load(const std::string& path, std::string& error) {
  const tools::FileText content = tools::readTextFile(path);
  tools::Log log(path);
  convert::star::Document document;
  NefFile result;
  result.file = path;
  if (!content.ok) {
    error = path + ": " + content.error;
  } else if (!convert::star::parse(content.text, document, log)) {
    error = log.messages().empty() ? path + ": no STAR file" : tools::describe(log.messages().back());
  } else if (hasSeveralBlocks(content.text)) {
    error = path + ": holds several data blocks; which one the list belongs to is not clear";
  }
  if (!error.empty()) return std::nullopt;
  result.text = content.text;
  for (const convert::star::Frame& frame : document.frames) {
    result.frameNames.insert(frame.name);
    const convert::star::Loop* loop = frame.loopWith("_nef_sequence.residue_name");
    for (std::size_t row = 0; loop != nullptr && row < loop->rows(); ++row) {
      const auto cell = [&](const char* tag) {
        return loop->text(row, loop->column(std::string("_nef_sequence.") + tag));
      };
      result.chains[cell("chain_code")][cell("sequence_code")] = cell("residue_name");
    }
  }
  if (!result.chains.empty()) return result;
  error = path + ": no loop _nef_sequence with residue_name: this is no NEF 1 file with a sequence";
  return std::nullopt;
}

std::optional<Labels> NefFile::label(const std::map<int, char>& sequence, const Labels& labels, bool anyChain,
                                     std::string& error) const {
  auto chain = chains.find(labels.chain);
  if (chain == chains.end() && anyChain && chains.size() == 1) chain = chains.begin();
  if (chain == chains.end()) {
    error = file + ": no chain " + labels.chain + " (see --chain); it has";
    for (const auto& [name, residues] : chains) error += " " + tools::printable(name);
    return std::nullopt;
  }
  Labels result;
  result.chain = chain->first;
  result.source = std::filesystem::path(file).filename().string();
  result.fixed = true;
  for (const auto& [resid, code] : sequence) {
    const std::string number = labels.number(resid);
    const auto residue = chain->second.find(number);
    const bool unknown = predictions::isUnknownType(code);
    result.numbers[resid] = number;
    result.names[resid] = residue == chain->second.end() ? "" : residue->second;
    if (unknown || plainType(result.names[resid]) == predictions::threeLetterName(code)) continue;
    error = file + ": residue " + number + " of chain " + chain->first + " is " +
            (result.names[resid].empty() ? "not there" : result.names[resid]) + ", the prediction has " +
            predictions::threeLetterName(code) + " (see --numbers and --chain)";
    return std::nullopt;
  }
  return result;
}

std::string NefFile::with(const std::string& frames) const {
  const bool crLf = text.find("\r\n") != std::string::npos;
  std::string result = text, added = (text.ends_with('\n') ? "\n" : "\n\n") + frames;
  for (const char c : added) {
    if (crLf && c == '\n') result += '\r';
    result += c;
  }
  return result;
}

std::string NefFile::unusedFrame(const std::string& name) const {
  std::string unused = name;
  for (int number = 2; frameNames.contains(unused); ++number) unused = name + "_" + std::to_string(number);
  return unused;
}

}  // namespace restraints
