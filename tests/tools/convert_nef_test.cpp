// NEF 1.1: chains, atom names, links, unassigned resonances.
#include <gtest/gtest.h>

#include "convert_support.h"

namespace {

using support::Converted;
using support::convertString;
using support::replaced;
using support::with;

const std::string kFile = R"(data_nef_test
save_nef_nmr_meta_data
   _nef_nmr_meta_data.format_name     nmr_exchange_format
   _nef_nmr_meta_data.format_version  1.1
save_
save_ccpn_extra
   _ccpn_extra.value 3
save_
save_nef_molecular_system
   loop_
      _nef_sequence.index _nef_sequence.chain_code _nef_sequence.sequence_code
      _nef_sequence.residue_name _nef_sequence.linking _nef_sequence.residue_variant
      1 A 5 GLY start .    2 A 6 CYS middle -HG   3 A 7 ALA end .
      4 B 5 GLY start .    5 B 6 CYS middle .     6 B 7 ALA end .
      7 C 1 HOH single .
   stop_
save_
save_nef_chemical_shift_list_main
   loop_
      _nef_chemical_shift.chain_code _nef_chemical_shift.sequence_code _nef_chemical_shift.residue_name
      _nef_chemical_shift.atom_name _nef_chemical_shift.value _nef_chemical_shift.value_uncertainty
      A 5 GLY HAx 3.900 0.02
      A 5 GLY HAy 4.100 0.02
      A 6 CYS H 8.3 .
      A 7 ALA HB% 1.4 .
      A 7 ALA CA 52.5 .
      @2 @12 . H 8.1 .
      A 6-1 . CA 60.0 .
   stop_
save_
)";

TEST(ConvertNef, TakesTheOnlyChainWithShifts) {
  const Converted result = convertString(kFile);
  ASSERT_TRUE(result.ok) << result.report();
  EXPECT_EQ(result.rows(),
            (std::vector<std::string>{"5 G HA2 3.900", "5 G HA3 4.100", "6 C HN 8.3", "7 A CA 52.5"}));
  EXPECT_EQ(result.conversion.sequence, "GCA");
  const std::string report = result.report();
  for (const char* part : {"NEF 1.1", "HAx to HA2", "2 shifts of unassigned resonances"}) {
    EXPECT_NE(report.find(part), std::string::npos) << part << "\n" << report;
  }
}

TEST(ConvertNef, GlycineProtonsUnderAllTheirNames) {
  const std::string pair = "A 5 GLY HAx 3.900 0.02\n      A 5 GLY HAy 4.100 0.02";
  const struct {
    const char* rows;
    std::vector<std::string> expected;
  } cases[] = {{"A 5 GLY HA% 4.0 .", {"5 G HA2 4.0"}},
               {"A 5 GLY QA 4.0 .", {"5 G HA2 4.0"}},
               {"A 5 GLY HA 4.0 .", {"5 G HA2 4.0"}},
               {"A 5 GLY HA3 4.0 .", {"5 G HA3 4.0"}},
               {"A 5 GLY HA2 4.1 .\nA 5 GLY HA1 4.0 .", {"5 G HA2 4.0", "5 G HA3 4.1"}},
               {"A 5 GLY HA% 4.0 .\nA 5 GLY HA3 4.1 .", {"5 G HA3 4.1"}}};
  for (const auto& c : cases) {
    const Converted result = convertString(replaced(kFile, pair, c.rows));
    std::vector<std::string> glycine;
    for (const std::string& row : result.rows()) {
      if (row.starts_with("5 ")) glycine.push_back(row);
    }
    EXPECT_EQ(glycine, c.expected) << c.rows << "\n" << result.report();
  }
}

TEST(ConvertNef, ChainsLinksAndBreaks) {
  const std::string twoChains = replaced(kFile, "@2 @12 . H 8.1 .", "B 7 ALA CA 52.9 .");
  const Converted undecided = convertString(twoChains);
  EXPECT_TRUE(undecided.ambiguous);
  EXPECT_NE(undecided.error().text.find("B: 3 residues, 1 backbone shifts"), std::string::npos);
  EXPECT_EQ(convertString(twoChains, with(&convert::Settings::chain, "B")).rows(),
            (std::vector<std::string>{"7 A CA 52.9"}));

  std::string link = "loop_";
  for (const std::string atom : {"_1", "_2"})
    for (const char* tag : {"chain_code", "sequence_code", "residue_name", "atom_name"})
      link += "\n_nef_covalent_links." + (tag + atom);
  link += "\nA 6 CYS SG B 6 CYS SG\nstop_\nsave_\nsave_nef_chemical_shift_list_main";
  const Converted linked = convertString(replaced(kFile, "save_\nsave_nef_chemical_shift_list_main", link));
  EXPECT_EQ(linked.conversion.sequence, "GcA") << linked.report();

  const std::string broken =
      replaced(replaced(replaced(kFile, "6 CYS middle -HG", "6 CYS break ."), "3 A 7", "3 A 10"), "A 7 ALA",
               "A 10 ALA");
  const Converted gap = convertString(broken);
  EXPECT_EQ(gap.conversion.sequence, "GCXXXA") << gap.report();
  EXPECT_EQ(gap.rows().back(), "10 A CA 52.5");
}

TEST(ConvertNef, OtherVersionsAndShiftsAlone) {
  const Converted old =
      convertString(replaced(replaced(kFile, "residue_name", "residue_type"), "1.1", "0.20"));
  EXPECT_EQ(old.rows(), convertString(kFile).rows()) << old.report();
  const std::string shifts = "data_x\n" + kFile.substr(kFile.find("save_nef_chemical_shift_list_main"));
  const Converted alone = convertString(shifts);
  EXPECT_EQ(alone.rows(), convertString(kFile).rows()) << alone.report();
  EXPECT_EQ(alone.conversion.sequence, "GCA");
  const Converted sequence = convertString(kFile.substr(0, kFile.find("save_nef_chemical_shift_list_main")),
                                           with(&convert::Settings::chain, "A"));
  EXPECT_TRUE(sequence.ok) << sequence.report();
  EXPECT_EQ(sequence.conversion.sequence, "GCA");
  EXPECT_NE(sequence.report().find("no shifts"), std::string::npos);
}

// Numbers that leave out a thousand residues again and again: no table of millions of residues.
TEST(ConvertNef, ManyBreaksStaySmall) {
  std::string rows;
  for (int i = 0; i < 300; ++i) rows += "1 A " + std::to_string(1 + 1000 * i) + " ALA break .\n";
  const std::size_t from = kFile.find("1 A 5 GLY"), to = kFile.find("stop_");
  const Converted result =
      convertString(replaced(kFile.substr(0, from) + rows + kFile.substr(to), "A 7 ALA", "A 1 ALA"));
  ASSERT_TRUE(result.ok) << result.report();
  EXPECT_EQ(result.conversion.sequence.size(), 300u + 299u * 10u);
  EXPECT_LE(result.log.count(tools::Severity::Warning), 2u) << "one word for all of them";
}

}  // namespace
