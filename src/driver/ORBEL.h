// The driver: owns every setting, table and per-residue result of one run; its member functions are the
// stages.
//
// Data flow: setArgs -> init -> getResInfo -> runABP_Prediction -> runSS_Prediction -> runS2_Prediction ->
// search prior, database -> searchDB and searchDB2 with the consensus -> the writers. Stages communicate only
// through the members below, grouped by the stage that fills them. Per-residue maps are keyed by residue
// number; an absent key reads as empty or zero (driver/maps.h).
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ann/ClusterData.h"
#include "shifts/triplet_library.h"
#include "tables/DB.h"
#include "tables/GDB.h"
#include "tables/PDB.h"

class CHI1ANN;
class OutputFile;
struct ScreenIndex;

/// One query triplet or library row of the triplet averaging as text: RESID_R1.., RESNAME_R1.., N_R1..
using Triplet = std::map<std::string, std::string>;
/// Search candidates: ascending score or distance -> database entry; an equal key replaces the entry.
using CandidateMap = std::map<double, int>;
using OptionMap = std::map<std::string, std::string>;

/// One row per residue of the range: N HA C CA CB HN in ppm, 9999 = missing.
using SecondaryShifts = std::vector<std::array<double, 6>>;

class ORBEL {
 public:
  ORBEL();
  ~ORBEL();
  ORBEL(const ORBEL&) = delete;
  ORBEL& operator=(const ORBEL&) = delete;

  // ---- entry and settings (driver/)
  // ------------------------------------------------------------------------
  static void printInfo();                 ///< banner, standard error
  [[noreturn]] static void printSyntax();  ///< usage text, exit status 255
  bool isAcceptedOption(const std::string& name) const;
  void setArgs(const OptionMap& options);
  static char* itoa(int value, char* buffer, int base);
  static char* ftoa(double value, char* buffer, char conversion, int precision);
  /// Table-cell text of a number: `ftoa` with conversion "g" and precision 6.
  static std::string cellText(double value);
  static std::string cellText(int value);
  static const std::string& versionBanner();  ///< one line: name and version, for REMARK lines

  // ---- pipeline (driver/)
  // ----------------------------------------------------------------------------------
  void orbelPredict();
  void buildSearchPrior();
  void loadDatabase();
  void buildSourceIndex();
  void runFirstPass();
  void runSecondPass();
  void searchAgain();                  ///< both passes anew, on the database's text
  void writeResults();                 ///< the tables of torsions, chi1 and matches
  bool isSearchable(int resid) const;  ///< inside the shift range and not a chain end
  void storeConsensus(int resid);      ///< consensus of the match lists -> predCount, predPhi ...

  // ---- outputs (driver/)
  // -----------------------------------------------------------------------------------
  void saveTable(const GDB& table, const std::string& file);
  /// Finishes an output that is open.
  void saveText(OutputFile& output, const std::string& file, const std::string& text);
  void reportLoss(const std::string& file, const std::string& reason);  ///< message, and status 1 at the end

  // ---- reference tables (driver/)
  // --------------------------------------------------------------------------
  void init();
  /// Warns of tables whose size is not that of the installation's list; those given by option are left out.
  void warnOfDamagedTables() const;
  double getRC(const std::string& code, const std::string& atom) const;         ///< 9999 when no row
  double getRCadj(const std::string& code, const std::string& atom) const;      ///< 0 when no row
  double getPrevRCadj(const std::string& code, const std::string& atom) const;  ///< by the preceding residue
  double getNextRCadj(const std::string& code, const std::string& atom) const;  ///< by the following residue
  double getWeight(const std::string& row, const std::string& column) const;    ///< 9999 when no row

  // ---- shift preparation (shifts/)
  // -------------------------------------------------------------------------
  void getResInfo();
  void checkCS();
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

  // ---- networks (ann/)
  // -------------------------------------------------------------------------------------
  void runABP_Prediction();
  void prepareResidueInputs();  ///< fills annResidueInputs
  static int getClusterInfo(std::vector<double>& values, ClusterData& result);
  void runSS_Prediction();
  void runSeqSS_Prediction();
  static double getConfidence(const std::vector<double>& p);
  void evalChi1WithANN(int resid, CandidateMap& fragments);
  /// The 39 chi1 network inputs of the fragment centred at database entry `entry`, whose neighbours must
  /// exist.
  std::vector<double> chi1NetworkInput(int resid, int entry) const;

  // ---- order parameter (rci/)
  // ------------------------------------------------------------------------------
  void runS2_Prediction();

  // ---- search, consensus, writers (search/)
  // ----------------------------------------------------------------
  void searchDB(int resid, CandidateMap& matches, CandidateMap& sameType);
  void searchDB2(int resid, CandidateMap& matches, CandidateMap& sameType);
  /// Same-type fragments that agree with the neighbours' predicted angles, at most 101: input of the chi1
  /// networks.
  void selectChi1Fragments(int resid, CandidateMap& sameType) const;
  bool checkCSCompleteness(int resid) const;
  void classifyMatchCluster(std::vector<double>& phi, std::vector<double>& psi, int& count,
                            std::vector<double>& flags, const ClusterData& clusters) const;
  static double getAVGAngle2(const std::vector<double>& angles);  ///< circular mean, 9999 for none
  static double getSTDAngle(const std::vector<double>& angles);  ///< circular spread; 0 for none, 180 for one
  static double getAverage(const std::vector<double>& values);   ///< 0 for none
  static double getSTDev(const std::vector<double>& values);     ///< sample standard deviation; 0 below two
  static std::string getChi1Rotamer(float chi1);                 ///< "g-", "g+", "t" or "na"
  void writeTorsionPredictions();
  void writePredAll();
  void writeChi1Predictions();

  // ==== members: constructor
  // ================================================================================
  std::vector<std::string> acceptedOptions;
  std::map<int, std::string> atomNames;  ///< 1 N, 2 HA, 3 C, 4 CA, 5 CB, 6 HN: order of every per-atom loop

  // ==== members: settings, filled by setArgs (defaults by the constructor), read by every stage
  // =============
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
  int matchLimit = 25;    ///< fragments kept per residue
  double s2Cutoff = 0.4;  ///< 1 - smallest accepted S2
  int alignLength = 7;    ///< residues per fragment, 5 to 8
  std::string blastCheckFile;
  bool clipOn = true, isotopeOn = false, quiet = true, hidePaths = true, checkOnly = false;
  bool applyOffsets = false, noProton = false, noOxiCysCheck = false;

  // ==== members: outputs, set by every writer
  // ===============================================================
  bool outputsWhole = true;  ///< false once a table that could be opened was not written completely

  // ==== members: init
  // =======================================================================================
  GDB inputTable, randomCoilTable, rcAdjTable, rcPrevTable, rcNextTable, isotopeTable, ssLimitTable;
  GDB homologyTable, weightTable;
  std::map<std::string, std::map<std::string, double>> isotopeShift;    ///< code -> CA, CB -> ppm; -iso only
  std::map<std::string, std::map<std::string, double>> homologyByName;  ///< triplet averaging
  std::map<char, std::map<char, double>> blosumMatrix;                  ///< search: query -> database code
  std::map<std::string, std::vector<double>>
      blosumScaled;  ///< 20 values / 10, A C D .. Y: phi/psi, SS networks
  std::map<std::string, std::vector<double>> blosumProfile;  ///< 20 values, A R N D ..: sequence network
  std::array<std::array<double, 7>, 4> ringWeights{};        ///< [p 1..3][atom 1..6]: triplet distance
  std::array<double, 7> atomWeights{};                       ///< [atom 1..6]: cost of a missing shift
  std::array<double, 4> ringScale{};                         ///< [p 1..3]: weight of the residue types
  std::map<char, std::unique_ptr<CHI1ANN>> chi1Networks;     ///< 17 residue types

  // ==== members: getResInfo and checkCS
  // =====================================================================
  int sequenceStart = 1;  ///< residue number of the first letter of the sequence
  int sequenceLength = 0;
  std::map<int, std::string> sequence;      ///< cysteines marked C (reduced) or c (oxidised)
  std::map<int, std::string> sequenceCopy;  ///< as read, for output
  int shiftFirstResid = 0, shiftLastResid = 0;
  std::map<int, char> residueCode;
  SecondaryShifts secondaryShift;   ///< row resid - firstResidOption; uncorrected by -offset
  std::map<int, int> missingCount;  ///< of the six backbone shifts
  std::map<int, std::map<std::string, double>> shiftAdjustment;  ///< subtracted reference value, ppm: RCI
  std::map<std::string, double> referencingOffset;               ///< CA, CB, HA, C in ppm; absent = none
  GDB adjustedShiftTable;       ///< SHIFT = secondary shift (after -offset): triplets, networks
  bool reportClipping = false;  ///< set once the search prior is prepared

  // ==== members: runABP_Prediction
  // ==========================================================================
  std::shared_ptr<const TripletLibrary> tripletLibrary;  ///< exclusions applied
  std::map<int, std::vector<double>> annResidueInputs;   ///< 32 entries, shifts first: SS networks, RCI
  std::map<int, std::vector<double>> fullPrediction, hybridPrediction;  ///< 324 network outputs
  std::map<int, std::vector<double>> phiPsiBoxProb;                     ///< 324 weighted values: search prior
  std::map<int, ClusterData> clusterInfo;                               ///< search prior, consensus
  std::map<int, double> topClusterFraction;                             ///< CLUST_1_PER: search prior

  // ==== members: runSS_Prediction, runSeqSS_Prediction, runS2_Prediction
  // ====================================
  std::map<int, std::vector<double>> ssShiftPrediction;     ///< helix, strand, coil
  std::map<int, std::vector<double>> ssSequencePrediction;  ///< helix, strand, coil
  std::map<int, double> rciValue;  ///< 0.4 ln(1 + 17.7 RCI) = 1.003 - S2; 9999 = undefined: classes, pred.tab

  // ==== members: search preparation (pipeline)
  // ==============================================================
  std::map<int, std::map<int, double>> searchPrior;  ///< residue -> box -> weight, absent = 0
  std::unique_ptr<DB> fragmentDatabase;
  int sourceCount = 0;                        ///< sources are numbered 1..sourceCount - 1; 0 is a placeholder
  std::map<int, int> sourceStart, sourceEnd;  ///< source number -> first and last entry
  std::shared_ptr<const ScreenIndex> screenIndex;  ///< of this database, during the first pass only

  // ==== members: search passes
  // ==============================================================================
  std::map<int, CandidateMap> firstPassMatches, firstPassSameType;
  std::map<int, std::vector<double>> matchPhi, matchPsi,
      matchDistance;                             ///< best first; consensus narrows angles
  std::map<int, std::map<int, int>> matchIndex;  ///< rank 1..25 -> database entry
  std::map<int, std::vector<double>> sameTypeChi1, sameTypeDistance;
  std::map<int, std::map<int, int>> sameTypeIndex;  ///< rank 1..20 -> database entry, first pass
  std::map<int, std::map<std::string, std::vector<double>>> chi1RotamerScores;  ///< up to 10 per rotamer

  // ==== members: consensus
  // ==================================================================================
  std::map<int, int> predCount;
  std::map<int, double> predPhi, predPsi, predPhiSD, predPsiSD;  ///< degrees
  std::map<int, std::vector<double>> matchInCluster;             ///< 1.0 / 0.0 per match rank
};
