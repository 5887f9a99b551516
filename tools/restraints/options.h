// Settings of orbeln-restraints.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/arguments.h"

namespace restraints {

enum class Format : unsigned char { Xplor, Cyana, Nef, Star, Gromacs, Amber };

struct Options {
  std::string predictionFile, chi1File, outputFile, coordinateFile;
  std::string inputTable;  ///< table with the remarks of the conversion; empty = look for it
  std::string intoFile;    ///< NEF file that the restraints are added to
  Format format = Format::Xplor;
  std::set<std::string> classes = {"Strong", "Generous"};
  double factor = 2;      ///< half width in standard deviations
  double floor = 20;      ///< smallest half width of phi and psi, degrees
  double cap = 179;       ///< largest half width, degrees
  double chi1Floor = 30;  ///< smallest half width of chi1, degrees
  double chi1Probability = 0.9;
  std::optional<double> force;  ///< force constant or weight in the format's own unit
  std::string chain;            ///< segment or chain name; empty = none (NEF: A)
  int residueOffset = 0;        ///< residue number in the coordinate file minus that of the table
  bool tableNumbers = false;    ///< residue numbers of the table also where the input had others
  bool unknownTypes = false;    ///< residues of unknown type give restraints, too
  bool dropBad = false;         ///< leave out what disagrees with a reference structure
  bool wrap = false;            ///< X-PLOR: with the statements around the assign lines
  bool quiet = false;
};

const tools::Program& program();

/// Settings from the command line; a text that is not empty says why it cannot be used.
std::string readOptions(const tools::Arguments& arguments, Options& options);

}  // namespace restraints
