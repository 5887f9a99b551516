// Phi/psi box distribution network: windows of five complete residues, plain mean of the ensemble.
#pragma once

#include "ann/ANN.h"

class SURFANN : public ANN {
 public:
  SURFANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory,
          const std::string& name);

  void setHybrid(int flag) { hybrid = flag; }
  void setThread(int count) { threads = count; }

  void loadWeights();  ///< level 2 only while the hybrid flag is 0
  void calcLevel1();
  void calcLevel2_omp();
  /// Plain mean; nothing for empty vectors or different lengths.
  static void applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                              const std::vector<double>& c, std::vector<double>& out);

  /// Two levels; the result is `level2Outputs`. Residues without a complete window keep the mean level-1
  /// output.
  void runANN(const ResidueVectors& input);
  /// One level; the result is `level1Outputs`. An absent residue on either side lets the second and the
  /// second-to-last residue take part.
  void runHybridANN(const ResidueVectors& input);

  int hybrid = 0;
  int threads = 1;  ///< stored only

 private:
  /// Residues strictly between `low` and `high` whose window of five is complete.
  std::vector<int> windowCentres(long long low, long long high) const;
  std::vector<double> meanLevel1Output() const;
};
