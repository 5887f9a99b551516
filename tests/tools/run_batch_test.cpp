// Every chain and list of a file, and several files, in folders of their own.
#include "run_support.h"

namespace {

using support::contains;
using support::ProgramRun;

class RunBatch : public support::RunFolder {
 protected:
  /// NMR-STAR with shifts of the helix query as chains 1 and 2 and a ligand 3; chain 1 in lists 1 and 2.
  std::string star() const {
    std::string sequence, rows;
    std::map<int, std::string> names;
    int id = 0;
    bool data = false;
    for (std::string_view rest = table_; !rest.empty();) {
      const std::size_t end = rest.find('\n');
      const auto words = support::split(std::string(rest.substr(0, end)));
      rest.remove_prefix(std::min(end, rest.size() - 1) + 1);
      if (data && words.size() == 4) {
        for (const char* where : {"1 1", "1 2", "2 1"}) {
          rows += std::to_string(++id) + " " + where + " " + words[0] + " " + words[1] + " " + words[2] +
                  " " + words[3] + "\n";
        }
      }
      data = data || (!words.empty() && words[0] == "FORMAT");
    }
    rows += std::to_string(++id) + " 3 1 1 HEM FE 1.0\n";
    return "data_x\nsave_s\n_Assigned_chem_shift_list.Sf_category assigned_chemical_shifts\nloop_\n"
           "_Atom_chem_shift.ID\n_Atom_chem_shift.Entity_assembly_ID\n_Atom_chem_shift.Assigned_chem_shift_"
           "list_ID\n"
           "_Atom_chem_shift.Comp_index_ID\n_Atom_chem_shift.Comp_ID\n_Atom_chem_shift.Atom_ID\n"
           "_Atom_chem_shift.Val\n" +
           rows + "stop_\nsave_\n";
  }
  const std::string table_ = support::helixQuery().table();
};

TEST_F(RunBatch, EveryChainAndListIsComparedOnOnePage) {
  support::writeFile(dir / "x.str", star());
  const ProgramRun choice = run("x.str");
  EXPECT_EQ(choice.status, 3) << choice.err;
  EXPECT_FALSE(exists("x_orbeln"));

  const ProgramRun all = run("x.str --all --restraints none");
  EXPECT_EQ(all.status, 0) << all.err;
  EXPECT_TRUE(contains(all.out, "3 of 3 runs gave results")) << all.out;
  for (const char* folder : {"chain1_list1", "chain1_list2", "chain2_list1"}) {
    EXPECT_TRUE(exists(std::string("x_orbeln/") + folder + "/report.html")) << folder;
    EXPECT_TRUE(
        contains(text("x_orbeln/index.html"), std::string("<a href=\"") + folder + "/report.html\">"));
    EXPECT_TRUE(contains(text("x_orbeln/comparison.tsv"), std::string("\n") + folder + "\tx.str, chain "))
        << folder;
  }
  EXPECT_TRUE(contains(text("x_orbeln/index.html"), "<h3>3 runs, ")) << "one picture for one protein";
  EXPECT_TRUE(contains(text("x_orbeln/index.html"), ": helix"));
  EXPECT_TRUE(contains(text("x_orbeln/chain1_list2/pred.tab"), "Input x.str, chain 1, list 2"));

  EXPECT_EQ(run("x.str --all --chain 2 --restraints none --no-report -o two").status, 0);
  EXPECT_TRUE(exists("two/x/pred.tab")) << text("err.txt");
}

TEST_F(RunBatch, OneBadFileDoesNotStopTheOthers) {
  support::writeFile(dir / "bad.tab", "VARS RESID\n");
  ASSERT_EQ(shell("mkdir b; cp query.tab b/query.tab").status, 0);
  const std::string quick = " --restraints none --no-report -o out";
  EXPECT_EQ(run("query.tab typo.tab" + quick).status, 1);
  EXPECT_FALSE(exists("out")) << "a typo is found before anything is made";
  const ProgramRun some = run("query.tab bad.tab b/query.tab" + quick);
  EXPECT_EQ(some.status, 1);
  EXPECT_TRUE(contains(some.out, "2 of 3 runs gave results\n") && contains(some.out, "What was made is in"))
      << some.out;
  EXPECT_TRUE(exists("out/query/pred.tab") && exists("out/query_2/pred.tab") && !exists("out/bad"));
  EXPECT_TRUE(contains(text("out/comparison.tsv"), "\nbad\tbad.tab\t")) << text("out/comparison.tsv");
  EXPECT_EQ(shell("cat query.tab | bin/orbeln-run -noproton -" + quick).status, 0) << text("err.txt");
  EXPECT_TRUE(contains(text("out/pred.tab"), "standard input"));
}

TEST_F(RunBatch, ManyChoicesAreATable) {
  std::string rows;
  for (int chain = 1; chain <= 12; ++chain) rows += std::to_string(chain) + " 1 1 ALA CA 52.5\n";
  support::writeFile(dir / "many.str",
                     "data_x\nsave_s\nloop_\n_Atom_chem_shift.Entity_assembly_ID\n"
                     "_Atom_chem_shift.Assigned_chem_shift_list_ID\n_Atom_chem_shift.Comp_index_ID\n"
                     "_Atom_chem_shift.Comp_ID\n_Atom_chem_shift.Atom_ID\n_Atom_chem_shift.Val\n" +
                         rows + "stop_\nsave_\n");
  const ProgramRun asked = run("many.str");
  EXPECT_EQ(asked.status, 3);
  EXPECT_TRUE(contains(asked.err, "12 choices") && contains(asked.err, "\n      12     1     1         1 "))
      << asked.err;
  const ProgramRun listed = shell("bin/orbeln-convert many.str --choices");
  EXPECT_EQ(listed.status, 0);
  EXPECT_TRUE(contains(listed.out, "chain\tlist\tresidues\tshifts\tchain_name\tlist_name\n1\t1\t1\t1\t\t"))
      << listed.out;
}

}  // namespace
