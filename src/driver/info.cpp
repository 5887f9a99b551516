// Banner, version line and usage text.
#include <cstdlib>
#include <iostream>

#include "driver/ORBEL.h"

namespace {

constexpr const char* kRule = "*--------------------------------------------------------------------*\n";

constexpr const char* kUsage =
    R"(Input Options:
 -in           [None]         Input Shift Table.
 -inTitle      [None]         Input Shift Table Title.
 -ref          [None]         Reference PDB Structure Input.
 -refTitle     [None]         Reference PDB Structure Input Title.
 -proton                      Use ORBEL-N Parameters for 1H/13C/15N (Default).
 -noproton                    Ignore Proton Shifts in Input, Use ORBEL
                              Parameters for 13C/15N Input Shifts Only.
 -autoproton                  Automatically Set Proton/No Proton Mode.
Output Options: 
 -sum          [pred.tab]     Summary Prediction Output.
 -all          [predAll.tab]  Comprehensive Prediction Output.
 -verb                        Verbose Mode ON.
 -noverb                      Verbose Mode OFF (Default).

Prediction Parameters:
 -first        [First]        First RESID to Use.
 -last         [Last]         Last RESID to Use.
 -s2Thresh     [0.6]          Minimum RCI-S2 for Accept A Prediction.

Chemical Shift (CS) Quality Check and Correction:
 -iso                         Apply 2H Isotope Correction to CA/CB Shifts.
 -offset                      Apply CS Offset Correction If Needed.
 -check                       Quality Check Only, without ORBEL-N Prediction.
 -clip                        Clip Extreme Shifts (Default).
 -noclip                      No Clipping of Shifts.
 -OxiCysCheck                 Auto Oxidization State Correction for CYS (Default)
                              (According To A CB Shift Cutoff Of 34ppm)
 -noOxiCysCheck               No Auto Oxidization State Correction for CYS

Exclude Options (Use Only One):
 -autoExcl                    Exclude Database Proteins with Sequence
                              Identical to Input Shifts (Default).
 -noautoExcl                  No Auto-Exclude of Identical Sequences.
 -excl         [None]         List of Database Proteins to Exclude;
                              Overrides Auto-Exclude.

Auto Format-Conversion Options for Input Shifts:
 -auto                        Test Input File Formats, Auto-Convert BMRB
                              NMR-Star Format if Needed (Default).
 -noauto                      No Input Format Testing or Conversion.
 -bmrb         [bmrb.tab]     Intermediate Output for Converted Shifts.

ORBEL-N Database:
 -orbelnDir    [ORBELN_DIR]   ORBEL-N Main Directory.
 -tabDir       [tab]          Subdirectory of Database Tables.
 -rand         [randcoil.tab] Random Coil Shift Table.
 -adj          [rcadj.tab]    Adjustment Table, or Keyword None.
 -prev         [rcprev.tab]   Previous Residue Adjustment, or None.
 -next         [rcnext.tab]   Next Residue Adjustment, or None.
 -limits       [sslimit.tab]  Secondary Shift Limits (For -clip).
 -db           [orbel.tab]    ORBEL-N Database File.

Sequence Based Secondary Structure Prediction Options:
 -seqSS                       Run the Module Only, without ORBEL-N Prediction.
 -blast_check  [None]         Input Psi-Blast .check File.

 -np           [1]            Number of processors for multi-threading.

Examples:
 Predict Phi/Psi Backbone and Chi1 Torsions from Ubiquitin Chemical Shifts:
   orbeln -in ubiq.tab
 Predict Phi/Psi and Chi1, Compare Predictions to Known Ubiquitin Structure:
   orbeln -in ubiq.tab -ref ubiq.pdb
)";

}  // namespace

const std::string& ORBEL::versionBanner() {
  static const std::string banner = "ORBEL-N version " ORBELN_VERSION " ORBELN_INFO";
  return banner;
}

void ORBEL::printInfo() {
  std::cerr << kRule << " This is the ORBEL-N system for predicting protein backbone/sidechain\n"
            << " torsion angles and secondary structure from NMR chemical shifts.\n\n"
            << " Neural networks turn windows of secondary shifts and residue types into\n"
            << " phi/psi maps; a database of peptide fragments of known structure is\n"
            << " searched under these maps, and the consensus of the best matches gives\n"
            << " the torsion angles and a reliability class for every residue.\n\n"
            << " Manual: README.md and docs/ of the distribution.\n"
            << " Reference: the README tells how to cite this program.\n"
            << " " << versionBanner() << "\n"
            << kRule;
}

void ORBEL::printSyntax() {
  std::cerr << kUsage;
  std::exit(255);
}
