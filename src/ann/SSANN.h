// Secondary structure from sequence profiles, with known structure of residues as optional context.
#pragma once

#include "ann/ANN.h"

class SSANN : public ANN {
 public:
  SSANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory,
        const std::string& name);

  void setOrder(int members) { order = members; }  ///< ensemble size, 3 or 5; no weights are read for another
  void setKNOWN_SS(const ResidueVectors& known) { knownSS = known; }

  void loadWeights();
  static void loadWeightBias5(const std::string& file, Layer& layer, int n, int m);
  void calcLevel1();
  void calcLevel2();
  /// Mean of five weighted by confidence; the plain mean when no member has any.
  static void applyVecAverage5(const std::vector<double>& a, const std::vector<double>& b,
                               const std::vector<double>& c, const std::vector<double>& d,
                               const std::vector<double>& e, std::vector<double>& out);

  /// Profiles: residue number -> 20 values. The normalised result is `level2Outputs`.
  void runANN(const ResidueVectors& profiles);

  int order = 3;
  ResidueVectors knownSS;  ///< helix, strand, coil; all zero = unknown

 private:
  bool isKnown(long long resid) const;
  std::vector<double> profileWindow(int k, int half) const;
  std::vector<double> structureWindow(int k, int half) const;
  void appendStructureBlock(long long resid, std::vector<double>& window) const;
};
