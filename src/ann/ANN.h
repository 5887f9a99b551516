// Two-level feed-forward network engine: windows of residue vectors in, one output vector per residue.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "ann/layer_kernel.h"
#include "tables/TableImage.h"

class GDB2;

/// Residue number -> vector.
using ResidueVectors = std::map<int, std::vector<double>>;

/// Each level is an ensemble of equally shaped three-layer perceptrons: a square tanh layer as wide as its
/// input, a tanh hidden layer and a linear output layer. Level 1 sees a window of input vectors, level 2 a
/// window of level-1 outputs. Weights come from text tables below the weight directory.
class ANN {
 public:
  static constexpr std::size_t kMaxMembers = 5;

  /// Weights and biases of one ensemble member in one layer.
  struct LayerMember {
    LayerWeights weights;
    std::vector<double> bias;
  };
  using Layer = std::array<LayerMember, kMaxMembers>;
  using MemberOutputs = std::array<std::vector<double>, kMaxMembers>;
  /// Joins the outputs of the ensemble members; leaves the result empty when their lengths do not fit.
  using Combination = void (*)(const MemberOutputs& outputs, std::vector<double>& combined);
  enum LayerName : std::size_t { kInput1, kHidden1, kOutput1, kInput2, kHidden2, kOutput2, kLayers };

  ANN();
  /// Widths: level-1 input, hidden, output, level-2 input, hidden, output.
  ANN(int N0, int N1, int N2, int N3, int N4, int N5, const std::string& directory, const std::string& name);

  /// Window assembly: 0 three residues, 1 to 3 the same without the shifts of the previous, central or next
  /// residue, 5 five residues with presence flags.
  void set_input_code(int code) { inputCode = code; }
  void getSlashChar();  ///< path separator as the PATH variable suggests

  void loadWeights();  ///< all six layers; from the table image where it has them
  /// Reads the three members of a layer of `n` units with `m` inputs. Missing columns read as 9999, missing
  /// rows leave the member short, so that its first evaluation ends the process.
  static void loadWeightBias3(const std::string& file, Layer& layer, int n, int m);

  /// Evaluates one layer of one member and appends the unit values to `y`. Inconsistent sizes end the process
  /// with a message, exit status 0.
  static void applyANNTransformation(const std::vector<double>& x, const LayerMember& member,
                                     std::vector<double>& y, int activation);
  void calcLevel1();
  void calcLevel2();
  /// Mean weighted by confidence; the plain mean when no member has any.
  static void applyVecAverage(const std::vector<double>& a, const std::vector<double>& b,
                              const std::vector<double>& c, std::vector<double>& out);
  /// Largest minus second largest of three class values; -1 for another number of values.
  static double getConfidence(const std::vector<double>& p);
  /// Clamps three class values to 0..1 and scales them to the sum 1; zeros when nothing is left.
  static void applyVecNormalization(std::vector<double>& p);

  /// The whole two-level run; loads the weights, leaves normalised class probabilities in `level2Outputs`.
  void runANN(const ResidueVectors& input);

  std::string slash;  ///< path separator
  std::string weightDirectory;
  std::string networkName;
  int inputCode = 0;
  std::array<int, 6> sizes;  ///< N0..N5
  std::array<Layer, kLayers> layers;
  ResidueVectors inputs, level1Inputs, level2Inputs, level1Outputs, level2Outputs;

 protected:
  static void loadMembers(const std::string& file, Layer& layer, std::size_t members, int n, int m);
  std::string weightFile(LayerName layer) const;
  void loadLevel(LayerName first, std::size_t members);
  void loadLevelText(LayerName first, std::size_t members);
  /// Units and inputs per unit of a layer.
  int units(LayerName layer) const;
  int unitInputs(LayerName layer) const;

  /// Evaluates the three layers from `first` on every entry of `windows`; results replace earlier ones.
  void evaluateEnsemble(const ResidueVectors& windows, LayerName first, std::size_t members,
                        Combination combine, ResidueVectors& outputs);

  /// True when the entries up to `reach` ordinals before and after `ordinal` are the neighbouring residue
  /// numbers. Ordinals beyond either end fail, or pass when `openEnds`.
  static bool hasNeighbours(const std::vector<int>& residues, std::size_t ordinal, std::size_t reach,
                            bool openEnds);
  static std::vector<int> residueNumbers(const ResidueVectors& vectors);
  /// Concatenation of the vectors of residues k - reach .. k + reach.
  static std::vector<double> joinWindow(const ResidueVectors& vectors, int k, int reach);

 private:
  /// The image under each layer, as far as its weights are used in place.
  std::array<image::BulkPart, kLayers> imaged;

  bool isIntact(LayerName first) const;
  void evaluateOnce(const ResidueVectors& windows, LayerName first, std::size_t members, Combination combine,
                    ResidueVectors& outputs) const;
  void checkChain(LayerName first, std::size_t members, std::size_t inputLength) const;
  bool qualifies(const std::vector<int>& residues, std::size_t ordinal) const;
  std::vector<double> level1Window(int k) const;
  std::vector<double> level2Window(int k) const;
  std::vector<double> fillVector() const;
};
