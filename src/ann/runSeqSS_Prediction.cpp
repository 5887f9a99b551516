// Secondary structure from a PSI-BLAST sequence profile alone.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "ann/SSANN.h"
#include "ann/ss_output.h"
#include "base/limits.h"
#include "base/maps.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "tables/OutputFile.h"
#include "tables/output_text.h"
#include "tables/wholeFile.h"

namespace {

constexpr std::size_t kRowBytes = kAminoAcids.size() * sizeof(double);
/// What the longest chain needs and one row more.
constexpr std::size_t kLongestCheckpoint =
    sizeof(std::int32_t) + kLongestChain + (kLongestChain + 1) * kRowBytes;

struct Checkpoint {
  std::string letters;
  std::vector<std::vector<double>> profiles;  ///< complete rows, percent, in kAminoAcids
};

/// Binary layout: 32-bit length, that many letters, then rows of 20 doubles in kScoreOrder. A file that
/// is shorter than it claims is read as far as it goes.
Checkpoint decodeCheckpoint(const std::string& bytes) {
  Checkpoint checkpoint;
  std::int32_t length = 0;
  if (bytes.size() < sizeof length) return checkpoint;
  std::memcpy(&length, bytes.data(), sizeof length);
  checkpoint.letters = bytes.substr(sizeof length, static_cast<std::size_t>(std::max(length, 0)));

  std::size_t position = sizeof length + checkpoint.letters.size();
  for (; position + kRowBytes <= bytes.size(); position += kRowBytes) {
    std::array<double, kAminoAcids.size()> row{};
    std::memcpy(row.data(), bytes.data() + position, kRowBytes);
    std::vector<double>& profile = checkpoint.profiles.emplace_back();
    for (const char code : kAminoAcids) profile.push_back(row[kScoreOrder.find(code)] * 100.0);
  }
  return checkpoint;
}

/// Letter of a profile row; X where the file has none or no printable one.
std::string letterOf(const Checkpoint& checkpoint, std::size_t row) {
  const char letter = row < checkpoint.letters.size() ? checkpoint.letters[row] : 'X';
  return std::string(1, letter > ' ' && letter <= '~' ? letter : 'X');
}

/// Profiles by residue number; fills the driver's sequence. Ends the process when the file cannot be opened.
ResidueVectors readProfiles(ORBEL& orbel, int first) {
  ResidueVectors profiles;
  if (orbel.blastCheckFile.empty()) return profiles;
  const FileBytes file = readWholeFile(orbel.blastCheckFile, false, kLongestCheckpoint);
  if (!file.ok) {
    std::cout << "Unable to open file";
    std::exit(255);
  }
  orbel.sequence.clear();
  Checkpoint checkpoint = decodeCheckpoint(file.bytes);
  requireChainLength(std::max(checkpoint.letters.size(), checkpoint.profiles.size()),
                     "checkpoint " + orbel.blastCheckFile);
  for (std::size_t k = 0; k < checkpoint.profiles.size(); ++k) {
    const int resid = first + static_cast<int>(k);
    profiles[resid] = std::move(checkpoint.profiles[k]);
    orbel.sequence[resid] = letterOf(checkpoint, k);
  }
  return profiles;
}

SSAssignment classify(const std::vector<double>& s) {
  const double highest = *std::max_element(s.begin(), s.end());
  const char letter = highest == 0.0 ? 'c' : s[0] == highest ? 'h' : s[1] == highest ? 'e' : 'c';
  return {letter, storedConfidence(ORBEL::getConfidence(s))};
}

std::string tableText(const ORBEL& orbel, int first) {
  std::string text = "REMARK  Neural network secondary structure prediction for " + orbel.inputTitle + "\n";
  text += "REMARK  Predictions using amino acid sequence alone\n";
  text += "REMARK     h-Helix    e-Strand   c-Coil \n\n";
  output_text::append(text, "DATA FIRST_RESID %d\n\n", first);

  std::string rows;
  SequenceBlocks blocks(text);
  for (const auto& [resid, s] : orbel.ssSequencePrediction) {
    if (s.size() != 3) continue;
    const SSAssignment assignment = classify(s);
    const std::string code = valueOr(orbel.sequence, resid);
    blocks.add(code, assignment);
    output_text::append(rows, " %4d %1s %8.3f %8.3f %8.3f %4.2f %c\n", resid, code.c_str(), s[0], s[1], s[2],
                        assignment.confidence, assignment.letter);
  }
  text += '\n';
  blocks.finish();
  text += "VARS RESID RESNAME Q_H Q_E Q_L CONFIDENCE SS_CLASS\n";
  text += "FORMAT %4d %1s %8.3f %8.3f %8.3f %4.2f %s\n\n";
  return text + rows;
}

}  // namespace

void ORBEL::runSeqSS_Prediction() {
  std::cout << "Secondary structure prediction ..." << std::endl;
  int first = 1;
  if (!inputFile.empty()) {
    const GDB table(inputFile);
    sequence = table.residList;
    first = table.firstResid;
    requireChainLength(sequence.size(), "file " + inputFile);
    requireResid(first, inputFile);
  }
  SSANN network(314, 70, 3, 59, 15, 3, tabDir, "seqSS15");
  network.setOrder(5);
  network.runANN(readProfiles(*this, first));
  ssSequencePrediction = std::move(network.level2Outputs);

  const std::string path = predPrefix + "SS.tab";
  OutputFile file(path);
  if (!file.isOpen()) {
    std::cerr << "\tCan't open write file " << path << " !!!" << std::endl;
    return;
  }
  saveText(file, path, tableText(*this, first));
}
