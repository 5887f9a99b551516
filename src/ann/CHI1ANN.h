// Chi1 network of one residue type: scores one database fragment against the query, smaller is better.
#pragma once

#include "ann/ANN.h"

class CHI1ANN : public ANN {
 public:
  CHI1ANN(int N0, int N1, int N2, const std::string& directory, const std::string& name);
  virtual ~CHI1ANN() = default;

  void loadWeights();  ///< level 1 only
  static void loadWeightBias3(const std::string& file, Layer& layer, int n, int m);
  void calcLevel1();
  /// Plain mean; nothing for empty vectors or different lengths.
  static void applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                              const std::vector<double>& c, std::vector<double>& out);
  /// First output value for one input vector; loads the weights on first use. 0 without any output.
  float runANNLevel1(std::vector<double> input);
  /// The same for many input vectors at once.
  std::vector<float> runANNLevel1(std::vector<std::vector<double>> many);

  int weightsLoaded = 0;
};
