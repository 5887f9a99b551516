// The driver: owns every setting, table and per-residue result of one run; its member functions are the
// stages.
//
// Data flow: setArgs -> init -> getResInfo -> runABP_Prediction -> runSS_Prediction -> runS2_Prediction ->
// search prior, database -> searchDB and searchDB2 with the consensus -> the writers. Stages communicate only
// through the members below, grouped by the stage that fills them. Per-residue maps are keyed by residue
// number; an absent key reads as empty or zero (base/maps.h).
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/ClusterData.h"
#include "base/angles.h"
#include "base/atoms.h"
#include "base/residue_range.h"
#include "base/statistics.h"
#include "driver/command_line.h"
#include "search/candidates.h"
#include "search/class_rule.h"
#include "search/screen_index.h"
#include "search/torsion_agreement.h"
#include "shifts/triplet_library.h"
#include "tables/DB.h"
#include "tables/GDB.h"
#include "tables/PDB.h"

class CHI1ANN;
class OutputFile;

/// One query triplet or library row of the triplet averaging as text: RESID_R1.., RESNAME_R1.., N_R1..
using Triplet = std::map<std::string, std::string>;

class ORBEL {
 public:
  ORBEL();
  ~ORBEL();
  ORBEL(const ORBEL&) = delete;
  ORBEL& operator=(const ORBEL&) = delete;

  // ---- entry and settings (driver/) -----------------------------------------------------------------------
  static void printInfo();                 ///< banner, standard error
  [[noreturn]] static void printSyntax();  ///< usage text, exit status 255
  void setArgs(const OptionMap& options);
  static char* itoa(int value, char* buffer, int base);
  static char* ftoa(double value, char* buffer, char conversion, int precision);
  static const std::string& versionBanner();  ///< one line: name and version, for REMARK lines

  // ---- pipeline (driver/) ---------------------------------------------------------------------------------
  void orbelPredict();
  void buildSearchPrior();
  void loadDatabase();
  void buildSourceIndex();
  void runFirstPass();
  void runSecondPass();
  void refineResidue(int resid);       ///< second pass of one residue
  void searchAgain();                  ///< both passes anew, on the database's text
  void writeResults();                 ///< the tables of torsions, chi1 and matches
  bool isSearchable(int resid) const;  ///< inside the shift range and not a chain end
  SourceRanges sourceRanges() const;
  void storeConsensus(int resid);  ///< consensus of the match lists -> predCount, predPhi ...

  // ---- outputs (driver/) ----------------------------------------------------------------------------------
  void saveTable(const GDB& table, const std::string& file);
  /// Finishes an output that is open.
  void saveText(OutputFile& output, const std::string& file, const std::string& text);
  void reportLoss(const std::string& file, const std::string& reason);  ///< message, and status 1 at the end

  // ---- reference tables (driver/) -------------------------------------------------------------------------
  void init();
  /// Warns of tables whose size is not that of the installation's list; those given by option are left out.
  void warnOfDamagedTables() const;
  double getRC(const std::string& code, const std::string& atom) const;         ///< 9999 when no row
  double getRCadj(const std::string& code, const std::string& atom) const;      ///< 0 when no row
  double getPrevRCadj(const std::string& code, const std::string& atom) const;  ///< by the preceding residue
  double getNextRCadj(const std::string& code, const std::string& atom) const;  ///< by the following residue
  double getWeight(const std::string& row, const std::string& column) const;    ///< 9999 when no row

  // ---- shift preparation (shifts/) ------------------------------------------------------------------------
  void getResInfo();
  /// Fills adjustedShiftTable (one row per residue of the range and atom), secondaryShift, missingCount,
  /// residueCode and shiftAdjustment from the input table and the reference tables.
  void fillAdjustedShifts();
  void checkCS();
  ResidueSpan span() const;
  ShiftRows shiftRows() const;
  /// `shift` brought into the limits of the residue's type; missing values pass unchanged.
  double clipSShift(int resid, double shift, const std::string& atom) const;
  /// Straight line y = intercept + slope x; `error` is the residuals' standard error. False for unequal
  /// lengths.
  static bool LinearLeastSquareFitting(const std::vector<double>& x, const std::vector<double>& y,
                                       double& slope, double& intercept, double& error);
  void loadTripletLibrary();
  Triplet getTriplet(int resid) const;
  bool testTriplet(Triplet triplet) const;
  bool calcAverageCS_orig(int resid, std::map<std::string, double>& averaged) const;

  // ---- networks (ann/) ------------------------------------------------------------------------------------
  void runABP_Prediction();
  void prepareResidueInputs();  ///< fills annResidueInputs
  static int getClusterInfo(std::vector<double>& values, ClusterData& result);
  void runSS_Prediction();
  void runSeqSS_Prediction();
  static double getConfidence(const std::vector<double>& p);
  void evalChi1WithANN(int resid, CandidateMap& fragments);
  /// The chi1 network inputs of the fragment centred at database entry `entry`, whose neighbours must
  /// exist.
  std::vector<double> chi1NetworkInput(int resid, int entry) const;

  // ---- order parameter (rci/) -----------------------------------------------------------------------------
  void runS2_Prediction();

  // ---- search, consensus, writers (search/) ---------------------------------------------------------------
  void searchDB(int resid, CandidateMap& matches, CandidateMap& sameType);
  void searchDB2(int resid, CandidateMap& matches, CandidateMap& sameType);
  /// Same-type fragments that agree with the neighbours' predicted angles, at most 101: input of the chi1
  /// networks.
  void selectChi1Fragments(int resid, CandidateMap& sameType) const;
  TorsionAgreement torsionAgreement(int resid) const;  ///< with the predictions as they stand
  /// Refills matchPhi, matchPsi, matchDistance and matchIndex from the first 25 entries of `list` in
  /// ascending key order. In verbose runs each match is one line on standard output, with the pre-screen
  /// score or first-pass key `keyOf` holds for its entry and `lineEnd` behind the source name.
  void fillMatchLists(int resid, const CandidateMap& list, const std::map<int, double>& keyOf,
                      const std::string& lineEnd);
  /// Appends chi1 and key of the entries of `list`, ascending, whose chi1 is defined, to the emptied
  /// sameTypeChi1 and sameTypeDistance, at most `limit` of them; their entry indices by rank.
  std::map<int, int> fillSameTypeLists(int resid, const CandidateMap& list, std::size_t limit);
  bool checkCSCompleteness(int resid) const;
  void classifyMatchCluster(std::vector<double>& phi, std::vector<double>& psi, int& count,
                            std::vector<double>& flags, const ClusterData& clusters) const;
  static double getAVGAngle2(const std::vector<double>& angles) { return circularMean(angles); }
  static double getSTDAngle(const std::vector<double>& angles) { return circularSpread(angles); }
  static double getAverage(const std::vector<double>& values) { return average(values); }
  static double getSTDev(const std::vector<double>& values) { return standardDeviation(values); }
  static std::string getChi1Rotamer(float chi1);  ///< "g-", "g+", "t" or "na"
  ClassInput classInput(int resid) const;
  bool hasReference() const;  ///< predictions are compared with a reference structure
  void writeTorsionPredictions();
  void writePredAll();
  void writeChi1Predictions();

  // ==== members: constructor ===============================================================================
  std::vector<std::string> acceptedOptions;
  std::map<int, std::string> atomNames;  ///< position from 1 -> name, in kAtomOrder

  // ==== members: settings, filled by setArgs (defaults by the constructor), read by every stage ============
  std::string installDir, pathSeparator, tabDir, predDir = ".";
  std::string exclusionList;  ///< library sources left out of the triplet averaging
  int threadCount = 1;        ///< stored only
  std::string inputFile, inputTitle;
  std::string referenceFile, referenceTitle;
  std::unique_ptr<PDB> referenceStructure;
  std::string databaseFile, weightFile, homologyFile, randomCoilFile, rcAdjFile, rcPrevFile, rcNextFile;
  std::string ssLimitFile, isotopeFile;
  std::string predFile = "pred.tab", predPrefix = "pred", predAllFile = "predAll.tab";
  int firstResidOption = -999999;  ///< narrowed to the usable residue range by getResInfo
  int lastResidOption = 999999;
  double seqSSThreshold = 0.2;  ///< stored only
  int topCount = 10;
  int matchLimit = static_cast<int>(kMatchesKept);  ///< fragments kept per residue
  double s2Cutoff = 0.4;                            ///< 1 - smallest accepted S2
  int alignLength = 7;                              ///< residues per fragment, 5 to 8
  std::string blastCheckFile;
  bool clipOn = true, isotopeOn = false, quiet = true, hidePaths = true, checkOnly = false;
  bool applyOffsets = false, noProton = false, noOxiCysCheck = false;

  // ==== members: outputs, set by every writer ==============================================================
  bool outputsWhole = true;  ///< false once a table that could be opened was not written completely

  // ==== members: init ======================================================================================
  GDB inputTable, randomCoilTable, rcAdjTable, rcPrevTable, rcNextTable, isotopeTable, ssLimitTable;
  GDB homologyTable, weightTable;
  std::map<std::string, std::map<std::string, double>> isotopeShift;    ///< code -> CA, CB -> ppm; -iso only
  std::map<std::string, std::map<std::string, double>> homologyByName;  ///< triplet averaging
  std::map<char, std::map<char, double>> blosumMatrix;                  ///< search: query -> database code
  std::map<std::string, std::vector<double>>
      blosumScaled;  ///< 20 values / 10, A C D .. Y: phi/psi, SS networks
  std::map<std::string, std::vector<double>> blosumProfile;  ///< 20 values, A R N D ..: sequence network
  std::array<AtomWeights, 4> ringWeights{};                  ///< [p 1..3][position]: triplet distance
  AtomWeights atomWeights{};                                 ///< [position]: cost of a missing shift
  std::array<double, 4> ringScale{};                         ///< [p 1..3]: weight of the residue types
  std::map<char, std::unique_ptr<CHI1ANN>> chi1Networks;     ///< 17 residue types

  // ==== members: getResInfo and checkCS ====================================================================
  int sequenceStart = 1;  ///< residue number of the first letter of the sequence
  int sequenceLength = 0;
  std::map<int, std::string> sequence;      ///< cysteines marked C (reduced) or c (oxidised)
  std::map<int, std::string> sequenceCopy;  ///< as read, for output
  int shiftFirstResid = 0, shiftLastResid = 0;
  std::map<int, char> residueCode;
  std::vector<ShiftRow>
      secondaryShift;               ///< row resid - firstResidOption, 9999 = missing; uncorrected by -offset
  std::map<int, int> missingCount;  ///< of the backbone shifts
  std::map<int, std::map<std::string, double>> shiftAdjustment;  ///< subtracted reference value, ppm: RCI
  std::map<std::string, double> referencingOffset;               ///< CA, CB, HA, C in ppm; absent = none
  GDB adjustedShiftTable;       ///< SHIFT = secondary shift (after -offset): triplets, networks
  bool reportClipping = false;  ///< set once the search prior is prepared

  // ==== members: runABP_Prediction =========================================================================
  std::shared_ptr<const TripletLibrary> tripletLibrary;  ///< exclusions applied
  std::map<int, std::vector<double>> annResidueInputs;   ///< 32 entries, shifts first: SS networks, RCI
  std::map<int, std::vector<double>> fullPrediction, hybridPrediction;  ///< network outputs by box
  std::map<int, std::vector<double>> phiPsiBoxProb;                     ///< weighted values: search prior
  std::map<int, ClusterData> clusterInfo;                               ///< search prior, consensus
  std::map<int, double> topClusterFraction;                             ///< CLUST_1_PER: search prior

  // ==== members: runSS_Prediction, runSeqSS_Prediction, runS2_Prediction ===================================
  std::map<int, std::vector<double>> ssShiftPrediction;     ///< helix, strand, coil
  std::map<int, std::vector<double>> ssSequencePrediction;  ///< helix, strand, coil
  std::map<int, double> rciValue;  ///< 1.003 - S2, 9999 = undefined: classes, pred.tab

  // ==== members: search preparation (pipeline) =============================================================
  std::map<int, std::map<int, double>> searchPrior;  ///< residue -> box -> weight, absent = 0
  std::unique_ptr<DB> fragmentDatabase;
  int sourceCount = 0;                        ///< sources are numbered 1..sourceCount - 1; 0 is a placeholder
  std::map<int, int> sourceStart, sourceEnd;  ///< source number -> first and last entry
  std::shared_ptr<const ScreenIndex> screenIndex;  ///< of this database, during the first pass only

  // ==== members: search passes =============================================================================
  std::map<int, CandidateMap> firstPassMatches, firstPassSameType;
  std::map<int, std::vector<double>> matchPhi, matchPsi,
      matchDistance;                             ///< best first; consensus narrows angles
  std::map<int, std::map<int, int>> matchIndex;  ///< rank 1..25 -> database entry
  std::map<int, std::vector<double>> sameTypeChi1, sameTypeDistance;
  std::map<int, std::map<int, int>> sameTypeIndex;  ///< rank 1..20 -> database entry, first pass
  std::map<int, std::map<std::string, std::vector<double>>> chi1RotamerScores;  ///< up to 10 per rotamer

  // ==== members: consensus =================================================================================
  std::map<int, int> predCount;
  std::map<int, double> predPhi, predPsi, predPhiSD, predPsiSD;  ///< degrees
  std::map<int, std::vector<double>> matchInCluster;             ///< 1.0 / 0.0 per match rank
};
