// The network weight tables of the synthetic installation: constant outputs, or one switch on one input.
#include "support/synthetic_networks.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace support {

namespace fs = std::filesystem;

namespace {

/// One layer, the same for every ensemble member; absent weights and biases are 0.
struct Layer {
  int units, inputs;
  std::map<int, std::map<int, double>> weights{};  ///< unit -> input -> weight
  std::map<int, double> biases{};
};

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g ", value);
  return text;
}

void writeLayer(const fs::path& file, const Layer& layer, int members) {
  std::string vars = "VARS ", format = "FORMAT ", zeros;
  for (int i = 1; i <= layer.inputs; ++i) {
    vars += std::to_string(i) + ' ';
    format += "%f ";
    zeros += "0 ";
  }
  std::string block;
  for (int unit = 0; unit < layer.units; ++unit) {
    const auto row = layer.weights.find(unit);
    if (row == layer.weights.end()) {
      block += zeros;
    } else {
      for (int i = 0; i < layer.inputs; ++i)
        block += row->second.contains(i) ? number(row->second.at(i)) : "0 ";
    }
    block += (layer.biases.contains(unit) ? number(layer.biases.at(unit)) : "0 ") + '\n';
  }
  std::ofstream out(file);
  out << vars << "b\n" << format << "%f\n\n";
  for (int member = 0; member < members; ++member) out << block;
}

/// One level whose outputs are `on` where gain * input + bias is well above 0 and `off` where it is well
/// below.
struct Level {
  int inputs, hidden;
  int switchInput;
  double gain, bias;
  std::vector<double> on, off;
};

Level constant(int inputs, int hidden, const std::vector<double>& outputs) {
  return {inputs, hidden, 0, 0.0, -200.0, outputs, outputs};
}

void writeLevel(const fs::path& stem, const Level& level, int members) {
  // Unit 0 of the two tanh layers is +1 or -1, exactly, since |argument| is at least 100.
  const Layer input{level.inputs, level.inputs, {{0, {{level.switchInput, level.gain}}}}, {{0, level.bias}}};
  const Layer hidden{level.hidden, level.inputs, {{0, {{0, 200.0}}}}};
  Layer output{int(level.on.size()), level.hidden};
  for (int k = 0; k < output.units; ++k) {
    const double on = level.on[std::size_t(k)], off = level.off[std::size_t(k)];
    if (on != off) output.weights[k][0] = (on - off) / 2;
    if (on + off != 0.0) output.biases[k] = (on + off) / 2;
  }
  writeLayer(stem.string() + ".WI.tab", input, members);
  writeLayer(stem.string() + ".WL1.tab", hidden, members);
  writeLayer(stem.string() + ".WL2.tab", output, members);
}

void writeNetwork(const fs::path& stem, const Level& first, const Level& second, int members = 3) {
  writeLevel(stem.string() + ".level1", first, members);
  writeLevel(stem.string() + ".level2", second, members);
}

/// 324 outputs that become `values` in `boxes` once multiplied by the root of the box densities.
std::vector<double> bump(const std::vector<int>& boxes, const std::vector<double>& values) {
  static const std::map<int, double> density{
      {77, 0.05177},  {78, 0.13347},  {79, 0.16829},  {95, 0.10731},  {96, 0.26618},  {97, 0.29894},
      {113, 0.09856}, {114, 0.23518}, {115, 0.24731}, {190, 0.00729}, {191, 0.00733}, {192, 0.00394},
      {208, 0.01754}, {209, 0.01463}, {210, 0.00691}, {226, 0.02057}, {227, 0.01343}, {228, 0.00549}};
  std::vector<double> outputs(324, 0.0);
  for (std::size_t k = 0; k < boxes.size(); ++k)
    outputs[std::size_t(boxes[k])] = values[k] / std::sqrt(density.at(boxes[k]));
  return outputs;
}

std::vector<double> helixBump(double centre) {
  return bump({96, 95, 97, 78, 114, 77, 79, 113, 115},
              {centre, 0.86, 0.82, 0.78, 0.74, 0.70, 0.66, 0.62, 0.58});
}

void writePhiPsiNetworks(const fs::path& tab) {
  const std::vector<double> leftHanded = bump({209, 190, 191, 192, 208, 210, 226, 227, 228},
                                              {0.90, 0.70, 0.70, 0.70, 0.70, 0.70, 0.70, 0.70, 0.70});
  // Five residues of 32 inputs, residue type first: 2 * 32 + 5 is the centre's similarity to glycine (4 or
  // less).
  const int glycine = 69;
  writeLevel(tab / "surf20_hyb.level1", {160, 180, glycine, 100, -200, leftHanded, helixBump(0.90)}, 3);
  // Level 2 sees five distributions of 324 boxes; the centre's box 209 is 0 except for glycine.
  writeNetwork(tab / "surf20", {160, 180, glycine, 100, -200, leftHanded, helixBump(0.88)},
               {1620, 360, 2 * 324 + 209, 400, -200, leftHanded, helixBump(0.88)});
}

void writeSecondaryStructureNetworks(const fs::path& tab) {
  const std::vector<double> level1{0.5, 0.25, 0.25};  // also the fill of residues without a level-2 result
  const auto shiftNetwork = [&](const char* name, int inputs, const std::vector<double>& outputs) {
    writeNetwork(tab / name, constant(inputs, 20, level1), constant(9, 6, outputs));
  };
  shiftNetwork("ss", 96, {0.7, 0.2, 0.1});
  shiftNetwork("ss.center", 84, {0.1, 0.8, 0.1});
  shiftNetwork("ss.prev", 84, {0.2, 0.2, 0.6});
  shiftNetwork("ss.next", 84, {0.8, 0.1, 0.1});
  writeNetwork(tab / "ss5", constant(164, 40, level1), constant(19, 6, {0.5, 0.1, 0.4}));
  writeNetwork(tab / "seqSS", constant(272, 60, level1), constant(51, 15, {0.2, 0.2, 0.6}));
  // Profiles are in alphabetical order: 7 blocks of 21, then 18 = W. Level 1 marks W in its first output.
  writeNetwork(tab / "seqSS15", {314, 70, 7 * 21 + 18, 10, -200, {1.0, 0.0, 0.5}, {0.0, 1.0, 0.5}},
               {59, 15, 7 * 4, 400, -200, {0.85, 0.10, 0.05}, {0.05, 0.75, 0.20}}, 5);
}

void writeChi1Networks(const fs::path& tab) {
  // Input 17 is sin(chi1) of the centre; small weights keep the tanh layers all but linear.
  const Layer input{39, 39, {{17, {{17, 0.1}}}}};
  const Layer hidden{15, 39, {{0, {{17, 1.0}}}}};
  const Layer output{1, 15, {{0, {{0, 4.0}}}}, {{0, 0.55}}};
  for (const char code : std::string("CDEFHIKLMNQRSTVWY")) {
    const std::string stem = (tab / "chi1_").string() + code + ".level1";
    writeLayer(stem + ".WI.tab", input, 3);
    writeLayer(stem + ".WL1.tab", hidden, 3);
    writeLayer(stem + ".WL2.tab", output, 3);
  }
}

}  // namespace

void writeNetworks(const fs::path& tab) {
  writePhiPsiNetworks(tab);
  writeSecondaryStructureNetworks(tab);
  writeChi1Networks(tab);
}

}  // namespace support
