// Random coil index: flexibility of the backbone from how close its shifts are to random coil values
// (Berjanskii & Wishart, J. Am. Chem. Soc. 127, 14970-14971, 2005).
#pragma once

#include <map>
#include <string>
#include <vector>

/// All maps are keyed by residue number. Six-value vectors follow kInputOrder.
class RCI {
 public:
  RCI();

  /// `shifts`: the first 12 values of each entry are (secondary shift, missing flag) pairs; `references`:
  /// the value subtracted from each observed shift; `names`: one-letter codes. The result is `s2List`.
  void runRCI(const std::map<int, std::vector<double>>& shifts,
              const std::map<int, std::map<std::string, double>>& references,
              const std::map<int, std::string>& names);
  /// Index of one residue from six scaled shift magnitudes; -1 unless both vectors hold six values.
  static double calcRCI(const std::vector<double>& magnitudes, const std::vector<double>& atomWeights);

  std::map<int, std::vector<double>> csList;  ///< 12 values, RCI secondary shifts; empty = no data
  std::map<int, std::map<std::string, double>> rcRef;
  std::map<int, std::string> seqList;
  std::map<int, std::vector<double>> csAvg;  ///< averaged, then scaled shift magnitudes
  std::map<int, int> missCount;              ///< 5 = no usable data
  std::vector<double> weights;
  std::map<int, double> rciList;
  std::map<int, double> s2List;  ///< 0.4 ln(1 + 17.7 RCI); 9999 = undefined

 private:
  void initWeightCoefficient();
  void inCS_convert_ORBEL2RCI();
  void applyThreePointsCSAveraging();
  void evaluateResidues();
  void applyEndCorrection();
  void applyFinalSmooth();

  std::size_t tableRow(int resid) const;
  double randomCoil(int resid, std::size_t column) const;
  bool hasData(int resid) const;
  int missingAtoms(int resid) const;
  int peakOf(int from, int to) const;
  void reflect(int resid, double peak);

  int lowest = 0;
  int highest = -1;
};
