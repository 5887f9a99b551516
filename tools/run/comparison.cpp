// The runs of a batch side by side: a page with a picture, and a table.
#include "run/comparison.h"

#include <cstdio>

#include "report/page.h"
#include "report/svg.h"
#include "run/progress.h"

namespace run {

namespace {

using report::escapeHtml;

/// Beside the style sheet of the report.
constexpr const char* kPictureStyle =
    ".p-l{fill:var(--coil);opacity:.45}.p-x{fill:none;stroke:var(--grid)}.p-seq{opacity:.4}"
    ".key.p-l{background:var(--coil);opacity:.45}td.wrap{white-space:normal;text-align:left}main{max-width:"
    "1240px}";

constexpr const char* kLegend =
    "<p class=\"legend\"><span class=\"item\"><span class=\"key ss-h\"></span> helix</span> "
    "<span class=\"item\"><span class=\"key ss-e\"></span> strand</span> "
    "<span class=\"item\"><span class=\"key p-l\"></span> coil</span> pale: from the sequence alone; "
    "frame: no prediction</p>\n";

std::string cell(const std::string& html, const char* style = "") {
  return std::string("<td") + style + ">" + html + "</td>";
}

std::string mean(const Outcome& outcome) {
  return outcome.s2Count > 0 ? report::fixed(outcome.s2Mean, 3) : "";
}

/// A folder name is made of characters that need no escape in a link.
std::string link(const Compared& run) {
  const std::string target = run.folder + (run.report ? "/report.html" : "/");
  return run.outcome ? "<a href=\"" + target + "\">" + escapeHtml(run.folder) + "</a>"
                     : escapeHtml(run.folder);
}

std::string tableRow(const Compared& run) {
  std::string row =
      "<tr>" + cell(link(run), " class=\"l\"") + cell(escapeHtml(run.job.title), " class=\"wrap\"");
  if (!run.outcome) {
    return row + "<td class=\"wrap\" colspan=\"13\">failed: " + escapeHtml(run.problem) + "</td></tr>\n";
  }
  const Outcome& outcome = *run.outcome;
  row += cell(std::to_string(outcome.sequence.size()));
  for (const auto& [name, count] : outcome.classes) row += cell(std::to_string(count));
  row += cell(std::to_string(outcome.inStructure('H'))) + cell(std::to_string(outcome.inStructure('E')));
  row += cell(mean(outcome)) + cell(std::to_string(outcome.outliers.size()));
  row += cell(escapeHtml(outcome.referencing), " class=\"wrap\"");
  return row + cell(escapeHtml(run.problem), " class=\"wrap\"") + "</tr>\n";
}

std::string pageTable(const std::vector<Compared>& runs) {
  std::string out =
      "<div class=\"scroll\"><table><thead><tr><th class=\"l\">Run</th><th class=\"l\">Input</th>"
      "<th>Residues</th>";
  for (const char* name :
       {"Strong", "Generous", "Warn", "Dyn", "Bad", "None", "Helix", "Strand", "Mean S2", "Outliers"}) {
    out += std::string("<th>") + name + "</th>";
  }
  out += "<th class=\"l\">Referencing</th><th class=\"l\">Missing</th></tr></thead>\n<tbody>\n";
  for (const Compared& run : runs) out += tableRow(run);
  return out + "</tbody></table></div>\n";
}

std::string pictures(const std::vector<Compared>& runs) {
  std::string out;
  for (const std::vector<std::size_t>& group : sameProteins(runs)) {
    const auto& sequence = runs[group.front()].outcome->sequence;
    out += "<h3>" + std::to_string(group.size()) + (group.size() == 1 ? " run" : " runs") + ", " +
           std::to_string(sequence.size()) + " residues from " + std::to_string(sequence.begin()->first) +
           " to " + std::to_string(sequence.rbegin()->first) + "</h3>\n" + structurePicture(runs, group);
  }
  return out;
}

}  // namespace

std::string comparisonPage(const std::string& title, const std::vector<Compared>& runs,
                           const std::vector<std::string>& failed, const std::vector<std::string>& comments) {
  std::string out =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
      escapeHtml(title) + "</title>\n<style>" + report::kStyle + kPictureStyle +
      "</style>\n</head>\n<body>\n<main>\n";
  out += "<h1>Torsion angles from chemical shifts: " + escapeHtml(title) + "</h1>\n<p class=\"sub\">" +
         std::to_string(runs.size()) + (runs.size() == 1 ? " run" : " runs") + "</p>\n";
  for (const std::string& problem : failed) out += "<p>Not read: " + escapeHtml(problem) + "</p>\n";
  out += "<section>\n<h2>Results</h2>\n" + pageTable(runs) +
         "<p class=\"legend\">Strong and Generous can be used. Mean S2: order parameter over the residues "
         "that have "
         "one. The same as a table: <a href=\"comparison.tsv\">comparison.tsv</a></p>\n</section>\n";
  out += "<section>\n<h2>Secondary structure</h2>\n" + std::string(kLegend) + pictures(runs) +
         "</section>\n<footer>";
  for (const std::string& comment : comments) out += escapeHtml(comment) + "<br>";
  return out + "</footer>\n</main>\n</body>\n</html>\n";
}

std::string comparisonTable(const std::vector<Compared>& runs) {
  std::string out =
      "run\tinput\tchain\tlist\tresidues\tStrong\tGenerous\tWarn\tDyn\tBad\tNone\thelix\tstrand\t"
      "mean_S2\toutliers\treferencing\tproblem\n";
  for (const Compared& run : runs) {
    std::vector<std::string> cells = {run.folder, run.job.title, run.job.chain, run.job.list};
    if (run.outcome) {
      const Outcome& outcome = *run.outcome;
      cells.push_back(std::to_string(outcome.sequence.size()));
      for (const auto& [name, count] : outcome.classes) cells.push_back(std::to_string(count));
      cells.push_back(std::to_string(outcome.inStructure('H')));
      cells.push_back(std::to_string(outcome.inStructure('E')));
      cells.push_back(mean(outcome));
      cells.push_back(std::to_string(outcome.outliers.size()));
      cells.push_back(outcome.referencing);
    } else {
      cells.resize(cells.size() + 12);
    }
    cells.push_back(run.problem);
    for (std::size_t k = 0; k < cells.size(); ++k) out += (k > 0 ? "\t" : "") + printable(cells[k]);
    out += "\n";
  }
  return out;
}

}  // namespace run
