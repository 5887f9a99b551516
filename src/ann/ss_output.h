// Parts of the secondary structure tables that both prediction modes share.
#pragma once

#include <string>
#include <vector>

/// Class of one residue: H E L from shifts, h e c from sequence, x none.
struct SSAssignment {
  char letter = 'x';
  double confidence = 0.0;
};

/// Confidence as stored and written: below 1, so that ten times it is a single digit.
inline double storedConfidence(double confidence) {
  return confidence < 1.0 ? confidence : 0.9999;
}

/// The DATA lines with sequence, classes and confidence digits, ten residues a word, fifty a line.
class SequenceBlocks {
 public:
  explicit SequenceBlocks(std::string& output) : text(output) {}
  void add(const std::string& code, const SSAssignment& assignment);
  void finish() { flush(); }  ///< writes what remains, even nothing

 private:
  void flush();

  std::string& text;
  int count = 0;
  std::string codes, classes, digits;
};
