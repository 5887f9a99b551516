// Secondary structure from shifts, completed from the sequence where shifts are missing.
#include <algorithm>
#include <iostream>

#include "ann/SSANN.h"
#include "ann/residue_vectors.h"
#include "ann/ss_output.h"
#include "base/maps.h"
#include "base/residues.h"
#include "driver/ORBEL.h"
#include "tables/OutputFile.h"
#include "tables/output_text.h"

namespace {

constexpr int kTooFewShifts = 4;  // missing shifts from which a residue counts as without shifts; given
constexpr double kUndecided =
    0.3333;  // a third each: helix and strand at the ends of the chain and of the shifts

/// Three residues, the shifts of one left out.
constexpr std::size_t kMaskedEntries = 3 * kResidueEntries - kShiftEntries;

/// Outputs of the networks that see the shifts of all three residues, or miss those of one of them.
struct ShiftNetworks {
  ResidueVectors complete, withoutCentre, withoutPrevious, withoutNext, fiveResidues;
};

ResidueVectors runShiftNetwork(ANN network, int inputCode, const ResidueVectors& inputs) {
  network.set_input_code(inputCode);
  network.runANN(inputs);
  return std::move(network.level2Outputs);
}

ShiftNetworks runShiftNetworks(const ORBEL& orbel) {
  const ResidueVectors& inputs = orbel.annResidueInputs;
  const std::string& dir = orbel.tabDir;
  ShiftNetworks networks;
  networks.complete = runShiftNetwork(ANN(3 * kResidueEntries, 20, 3, 9, 6, 3, dir, "ss"), 0, inputs);
  networks.withoutCentre = runShiftNetwork(ANN(kMaskedEntries, 20, 3, 9, 6, 3, dir, "ss.center"), 2, inputs);
  networks.withoutPrevious = runShiftNetwork(ANN(kMaskedEntries, 20, 3, 9, 6, 3, dir, "ss.prev"), 1, inputs);
  networks.withoutNext = runShiftNetwork(ANN(kMaskedEntries, 20, 3, 9, 6, 3, dir, "ss.next"), 3, inputs);
  ResidueVectors typeFirstInputs;
  for (const auto& [resid, entry] : inputs) typeFirstInputs[resid] = typeFirst(entry);
  networks.fiveResidues =
      runShiftNetwork(ANN(5 * kResidueEntries + 4, 40, 3, 19, 6, 3, dir, "ss5"), 5, typeFirstInputs);
  return networks;
}

bool isZero(const std::vector<double>& p) {
  return p[0] == 0.0 && p[1] == 0.0 && p[2] == 0.0;
}

/// Three class values; zeros where the network has no output for the residue.
std::vector<double> classValues(const ResidueVectors& outputs, int resid) {
  const auto* output = findValue(outputs, resid);
  return output != nullptr && output->size() == 3 ? *output : std::vector<double>(3, 0.0);
}

/// The network for the pattern of residues with shifts around `resid`; zeros where none fits.
std::vector<double> selectByShifts(const ORBEL& orbel, const ShiftNetworks& networks, int resid) {
  const auto hasShifts = [&](int r) { return valueOr(orbel.missingCount, r) < kTooFewShifts; };
  const bool previous = hasShifts(resid - 1);
  const bool centre = hasShifts(resid);
  const bool next = hasShifts(resid + 1);
  if (!centre && previous && next) return classValues(networks.withoutCentre, resid);
  if (!previous && centre && next) return classValues(networks.withoutPrevious, resid);
  if (!next && previous && centre) return classValues(networks.withoutNext, resid);
  if (previous && centre && next) return classValues(networks.complete, resid);
  return std::vector<double>(3, 0.0);
}

/// Average of both predictions, scaled to the sum 1, in single precision.
void joinFiveResidues(const std::vector<double>& p, std::vector<double>& q) {
  std::array<float, 3> joint{};
  for (std::size_t i = 0; i < 3; ++i) joint[i] = static_cast<float>(p[i] + q[i]);
  const float total = joint[0] + joint[1] + joint[2];
  if (!(total > 0.0F)) return;
  for (std::size_t i = 0; i < 3; ++i) q[i] = static_cast<double>(joint[i] / total);
}

std::vector<double> shiftPrediction(const ORBEL& orbel, const ShiftNetworks& networks, int resid) {
  if (orbel.span().isCutEnd(resid)) return std::vector<double>(3, 0.0);
  std::vector<double> q = selectByShifts(orbel, networks, resid);
  const auto* p = findValue(networks.fiveResidues, resid);
  if (p != nullptr && p->size() == 3 && !isZero(q)) joinFiveResidues(*p, q);
  return q;
}

ResidueVectors sequencePrediction(const ORBEL& orbel) {
  ResidueVectors profiles;
  for (const auto& [resid, code] : orbel.sequence) {
    std::vector<double> profile = valueOr(orbel.blosumProfile, foldedCode(code));
    if (profile.size() == kAminoAcids.size()) profiles[resid] = std::move(profile);
  }
  SSANN network(272, 60, 3, 51, 15, 3, orbel.tabDir, "seqSS");
  network.setKNOWN_SS(orbel.ssShiftPrediction);
  network.runANN(profiles);
  return std::move(network.level2Outputs);
}

/// Ends of the chain and of the shifts, where the shift networks have too little context.
bool isBoundary(const ORBEL& orbel, int resid) {
  return resid == orbel.shiftFirstResid || resid == orbel.shiftLastResid || resid == 1 ||
         resid == orbel.sequenceStart + orbel.sequenceLength - 1;
}

/// Class from the sequence prediction; `confidence` stands where there is none.
SSAssignment classifyBySequence(const std::vector<double>& s, double confidence) {
  if (s.size() != 3) return {'x', confidence};
  const double highest = *std::max_element(s.begin(), s.end());
  if (highest == 0.0) return {'x', 0.0};
  const char letter = s[0] == highest ? 'h' : s[1] == highest ? 'e' : 'c';
  return {letter, ORBEL::getConfidence(s)};
}

SSAssignment classify(const ORBEL& orbel, int resid) {
  const std::vector<double> q = classValues(orbel.ssShiftPrediction, resid);
  const double highest = *std::max_element(q.begin(), q.end());
  double helix = q[0];
  double strand = q[1];
  double confidence = ORBEL::getConfidence(q);
  if (isBoundary(orbel, resid)) {
    confidence = 0.0;
    helix = strand = kUndecided;
  }
  if (highest == 0.0) return classifyBySequence(valueOr(orbel.ssSequencePrediction, resid), confidence);
  const char letter = helix == highest ? 'H' : strand == highest ? 'E' : 'L';
  return {letter, confidence};
}

void appendHeader(const ORBEL& orbel, std::string& text) {
  text += "REMARK Secondary Structure Prediction for Chemical Shift Input " + orbel.inputTitle + "\n \n";
  text += "REMARK     H-Helix    E-Strand   L-Coil (Chemical shift based)\n";
  text += "REMARK     h-Helix    e-Strand   c-Coil (Sequence based)\n \n";
  text += "REMARK Reference:\n";
  text += "REMARK  Relationship between nuclear magnetic resonance chemical shift\n";
  text += "REMARK  and protein secondary structure.\n";
  text += "REMARK  D.S. Wishart, B.D. Sykes and F.M. Richards\n";
  text += "REMARK  J. Mol. Biol. 222, 311-333 (1991)\n \n";
  output_text::append(text, "DATA FIRST_RESID %d\n \n", orbel.sequenceStart);
}

void appendRow(const ORBEL& orbel, int resid, const SSAssignment& assignment, std::string& text) {
  const std::string code = valueOr(orbel.sequenceCopy, resid);
  if (code.empty()) return;
  std::vector<double> q = classValues(orbel.ssShiftPrediction, resid);
  if (assignment.letter == 'h' || assignment.letter == 'e' || assignment.letter == 'c') {
    q = classValues(orbel.ssSequencePrediction, resid);
  } else if (isBoundary(orbel, resid)) {
    q.assign(3, kUndecided);
  }
  output_text::append(text, " %4d %1s %2d %2d %8.3f %8.3f %8.3f %4.2f %c\n", resid,
                      output_text::singleCode(code).c_str(),
                      presentShifts(orbel.missingCount, resid - 1, resid + 1),
                      presentShifts(orbel.missingCount, resid, resid), q[0], q[1], q[2],
                      assignment.confidence, assignment.letter);
}

}  // namespace

double ORBEL::getConfidence(const std::vector<double>& p) {
  if (p.size() < 3) return 0.0;
  std::array<double, 3> sorted = {p[0], p[1], p[2]};
  std::sort(sorted.begin(), sorted.end());
  return sorted[2] - sorted[1];
}

void ORBEL::runSS_Prediction() {
  const ShiftNetworks networks = runShiftNetworks(*this);
  for (const auto& entry : sequence)
    ssShiftPrediction[entry.first] = shiftPrediction(*this, networks, entry.first);
  ssSequencePrediction = sequencePrediction(*this);

  std::string text;
  appendHeader(*this, text);
  std::map<int, SSAssignment> assignments;
  SequenceBlocks blocks(text);
  for (const auto& [resid, code] : sequence) {
    SSAssignment& assignment = assignments[resid];
    assignment = classify(*this, resid);
    assignment.confidence = storedConfidence(assignment.confidence);
    blocks.add(code, assignment);
  }
  blocks.finish();
  text += "VARS RESID RESNAME CS_CNT CS_CNT_R2 Q_H Q_E Q_L CONFIDENCE SS_CLASS\n";
  text += "FORMAT %4d %1s %2d %2d %8.3f %8.3f %8.3f %4.2f %s\n\n";
  for (const auto& entry : ssShiftPrediction) appendRow(*this, entry.first, assignments[entry.first], text);

  const std::string path = predPrefix + "SS.tab";
  OutputFile file(path);
  if (!file.isOpen()) {
    std::cerr << "\tCan't open write file " << path << " !!!" << std::endl;
    return;
  }
  saveText(file, path, text);
}
