// Atom numbers of the user's structure file.
#include "restraints/coordinates.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "common/numbers.h"
#include "common/residue_variants.h"
#include "predictions/names.h"
#include "tables/text.h"

namespace restraints {

namespace {

/// Columns `from` to `to` (from 1, inclusive), white space trimmed; empty beyond the line's end.
std::string field(const std::string& line, std::size_t from, std::size_t to) {
  if (line.size() < from) return {};
  return std::string(text::trim(std::string_view(line).substr(from - 1, to - from + 1)));
}

/// The plain name behind those that force fields give to states of a residue.
std::string plainName(const std::string& name) {
  if (const tools::ResidueVariant* variant = tools::findResidueVariant(name)) {
    return predictions::threeLetterName(variant->parent);
  }
  // Terminal residues carry N or C in front in some force fields (NMET, CGLY).
  if (name.size() == 4 && (name[0] == 'N' || name[0] == 'C')) return plainName(name.substr(1));
  return name;
}

bool isHydrogen(const std::string& atomName) {
  const std::size_t letter = atomName.find_first_not_of("0123456789");
  return letter != std::string::npos && atomName[letter] == 'H';
}

}  // namespace

void CoordinateFile::add(const std::string& resid, std::string atomName, std::string residueName) {
  hydrogens = hydrogens || isHydrogen(atomName);
  atoms[{resid, std::move(atomName)}].push_back({++count, std::move(residueName)});
}

bool CoordinateFile::readPdbLine(const std::string& line, const std::string& chain, Counting counting,
                                 std::string& error) {
  if (!line.starts_with("ATOM") && !line.starts_with("HETATM")) return true;
  const std::string alternate = field(line, 17, 17);
  if (!alternate.empty() && alternate != "A") return true;  // the topology holds one location
  if (!chain.empty() && field(line, 22, 22) != chain) {
    count += counting == Counting::File ? 1 : 0;
    return true;
  }
  int resid = 0;
  const std::string name = field(line, 13, 16);
  if (name.empty() || !tools::parseInteger(field(line, 23, 26), resid)) {
    error = "an atom record without atom name or residue number";
    return false;
  }
  add(std::to_string(resid) + field(line, 27, 27), name, field(line, 18, 21));
  return true;
}

bool CoordinateFile::readGroLine(const std::string& line, std::string& error) {
  int resid = 0;
  const std::string name = field(line, 11, 15);
  if (name.empty() || !tools::parseInteger(field(line, 1, 5), resid)) {
    error = "an atom line without atom name or residue number";
    return false;
  }
  add(std::to_string(resid), name, field(line, 6, 10));
  return true;
}

namespace {

struct Lines {
  std::vector<std::string> text;
  bool pdb = false;
};

std::optional<Lines> readLines(const std::string& path, std::string& error) {
  std::error_code status;
  std::ifstream in;
  if (!std::filesystem::is_directory(path, status)) in.open(path, std::ios::binary);
  if (!in.is_open()) {
    error = path + ": cannot be opened";
    return std::nullopt;
  }
  Lines lines;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.pdb = lines.pdb || line.starts_with("ATOM  ") || line.starts_with("HETATM");
    lines.text.push_back(std::move(line));
  }
  return lines;
}

/// Atom count of a .gro file; -1 when the second line holds none or the file is cut short.
int groAtoms(const Lines& lines) {
  int expected = -1;
  if (lines.text.size() < 2 || !tools::parseInteger(field(lines.text[1], 1, 20), expected)) return -1;
  const auto rows = static_cast<std::size_t>(expected < 0 ? 0 : expected);
  return expected >= 1 && lines.text.size() >= rows + 2 ? expected : -1;
}

}  // namespace

std::optional<CoordinateFile> CoordinateFile::load(const std::string& path, const std::string& chain,
                                                   Counting counting, std::string& error) {
  const std::optional<Lines> lines = readLines(path, error);
  if (!lines) return std::nullopt;
  CoordinateFile result;
  result.file = path;
  std::size_t first = 0, end = lines->text.size();
  if (!lines->pdb) {
    const int expected = groAtoms(*lines);
    if (expected < 0) {
      error = path + ": neither a PDB file with atoms nor a complete .gro file";
      return std::nullopt;
    }
    if (!chain.empty()) {
      error = path + ": a .gro file names no chains: leave --chain out or give a PDB file";
      return std::nullopt;
    }
    first = 2;
    end = first + static_cast<std::size_t>(expected);
  }
  for (std::size_t i = first; i < end; ++i) {
    const std::string& line = lines->text[i];
    if (lines->pdb && line.starts_with("ENDMDL")) break;  // the first model
    const bool read =
        lines->pdb ? result.readPdbLine(line, chain, counting, error) : result.readGroLine(line, error);
    if (!read) {
      error = path + ":" + std::to_string(i + 1) + ": " + error;
      return std::nullopt;
    }
  }
  if (!result.atoms.empty()) return result;
  error = path + ": no atoms" + (chain.empty() ? "" : " of chain " + chain);
  return std::nullopt;
}

int CoordinateFile::find(const RestraintAtom& atom, const std::string& resid, const std::string& name,
                         std::string& error) const {
  const std::string wanted = predictions::threeLetterName(atom.code);
  const std::string place = "residue " + resid + " atom " + atom.name;
  const auto found = atoms.find({resid, atom.name});
  if (found == atoms.end()) {
    error = file + ": " + place + " (" + name + ") is not there";
    return 0;
  }
  std::vector<int> numbers;
  for (const CoordinateAtom& candidate : found->second) {
    const bool fits =
        wanted == "UNK" || candidate.residueName == name || plainName(candidate.residueName) == wanted;
    if (fits) numbers.push_back(candidate.number);
  }
  if (numbers.size() == 1) return numbers[0];
  if (numbers.empty()) {
    error = file + ": " + place + " belongs to " + found->second[0].residueName + ", the prediction has " +
            name + " (see --numbers, --residue-offset and --chain)";
  } else {
    error = file + ": " + place + " occurs " + std::to_string(numbers.size()) +
            " times: name one chain with --chain or give a file with one molecule";
  }
  return 0;
}

std::optional<AtomNumbers> CoordinateFile::match(const RestraintList& list, int residueOffset,
                                                 std::string& error) const {
  AtomNumbers numbers;
  for (const Restraint& restraint : list.restraints) {
    std::array<int, 4> row{};
    for (std::size_t k = 0; k < 4; ++k) {
      const RestraintAtom& atom = restraint.atoms[k];
      const std::string number =
          residueOffset == 0 ? list.labels.number(atom.resid) : std::to_string(atom.resid + residueOffset);
      row[k] = find(atom, number, list.labels.name(atom.resid, atom.code), error);
      if (row[k] == 0) return std::nullopt;
    }
    numbers.push_back(row);
  }
  return numbers;
}

}  // namespace restraints
