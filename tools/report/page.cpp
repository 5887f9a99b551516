// The report page: summary on top, then one section per kind of result.
#include "report/page.h"

#include <map>
#include <string>
#include <string_view>

#include "report/figures.h"
#include "report/summary.h"
#include "report/svg.h"
#include "report/tables.h"

namespace report {

namespace {

std::string key(std::string_view cssClass, std::string_view label) {
  std::string text = "<span class=\"item\"><span class=\"key ";
  text.append(cssClass).append("\"></span> ").append(label).append("</span> ");
  return text;
}

std::string classLegend() {
  return key("k-strong", "Strong (S)") + key("k-generous", "Generous (G)") + key("k-warn", "Warn (W)") +
         key("k-dyn", "Dyn (D)") + key("k-bad", "Bad (B)") + key("k-none", "None");
}

std::string header(const ReportData& data) {
  const std::string title = escapeHtml(data.title);
  std::string out = "<h1>Torsion angles from chemical shifts: " + title + "</h1>\n<p class=\"sub\">";
  out += std::to_string(data.residues.size()) + " residues, " + std::to_string(data.residues.front().resid) +
         " to " + std::to_string(data.residues.back().resid);
  if (!data.referenceTitle.empty()) out += "; compared with " + escapeHtml(data.referenceTitle);
  if (!data.version.empty()) out += "; " + escapeHtml(data.version);
  return out + "</p>\n";
}

std::string summaryList(const ReportData& data) {
  std::string out = "<ul class=\"summary\">\n";
  for (const Statement& statement : summarize(data)) {
    out += statement.warning ? "<li class=\"warning\">" : "<li>";
    out += escapeHtml(statement.text) + "</li>\n";
  }
  if (!data.missing.empty()) {
    out += "<li>Not found, and therefore left out: ";
    for (std::size_t k = 0; k < data.missing.size(); ++k) {
      out += (k > 0 ? ", " : "") + escapeHtml(data.missing[k]);
    }
    out += ".</li>\n";
  }
  out += "</ul>\n<ul class=\"chips\">\n";
  for (const auto& [name, count] : countClasses(data)) {
    std::string style = name;
    style[0] = static_cast<char>(style[0] - 'A' + 'a');
    out += "<li><span class=\"key k-" + style + "\"></span>" + name + " <b>" + std::to_string(count) +
           "</b></li>\n";
  }
  return out + "</ul>\n";
}

struct Section {
  const char* id;
  const char* title;
  bool shown;
  std::string intro;
  std::string (*content)(const ReportData&);
};

std::string structureIntro(const ReportData& data) {
  std::string out = "<p class=\"legend\">";
  if (data.hasSs) {
    out += key("ss-h", "helix") + key("ss-e", "strand") + key("ss-l", "coil") +
           key("conf", "confidence (0 to 1) from shifts") + key("conf-seq", "from the sequence") + "<br>";
  }
  return out + classLegend() + "</p>\n";
}

std::string torsionIntro(const ReportData& data) {
  std::string out =
      "<p>Predicted φ and ψ in degrees with bars of one standard deviation; a bar that leaves the plot at "
      "±180° comes back on the other side. Only Strong and Generous are meant for use.</p>\n"
      "<p class=\"legend\">" +
      classLegend();
  if (data.hasReference) out += key("diamond", "reference structure");
  return out + "</p>\n";
}

std::vector<Section> sections(const ReportData& data) {
  return {
      {"sequence", "Sequence, secondary structure, classes", true, structureIntro(data), sequenceStrip},
      {"torsions", "Backbone torsions", true, torsionIntro(data), torsionPlots},
      {"s2", "Order parameter S²", data.hasS2,
       "<p>From the random coil index; 1 is rigid. The dashed line is the default limit of class Dyn, 0.6 "
       "(<span class=\"nobr\">-s2Thresh</span>).</p>\n",
       orderParameterPlots},
      {"chi1", "Side chains: χ1 rotamers", data.hasChi1,
       "<p class=\"legend\">Probability of " + key("rot-gm", "g-") + key("rot-gp", "g+") + key("rot-t", "t") +
           "<br>Below the bars: the predicted rotamer, · for none.</p>\n"
           "<p>Valine: rotamer names here stand 120° below the torsion N-CA-CB-CG1; the angles in the table "
           "at "
           "the end are true torsions.</p>\n",
       chi1Plots},
      {"maps", "Ramachandran maps", data.hasBoxes || data.hasMatches, "", ramachandranMaps},
      {"outliers", "Shift outliers", data.hasShifts || data.check.fromLog, "", outlierTable},
      {"table", "All residues", true, "<p>Angles with standard deviations.</p>\n", residueTable},
  };
}

/// `skeleton` with every {{name}} replaced by its part.
std::string fill(std::string_view skeleton, const std::map<std::string_view, std::string>& parts) {
  std::string out;
  for (std::size_t open; (open = skeleton.find("{{")) != std::string_view::npos;) {
    const std::size_t close = skeleton.find("}}", open);
    out.append(skeleton.substr(0, open)).append(parts.at(skeleton.substr(open + 2, close - open - 2)));
    skeleton.remove_prefix(close + 2);
  }
  return out.append(skeleton);
}

}  // namespace

std::string htmlPage(const ReportData& data) {
  std::string navigation, content;
  for (const Section& section : sections(data)) {
    if (!section.shown) continue;
    const std::string id = std::string(section.id) + "\">" + section.title;
    navigation += "<a href=\"#" + id + "</a>\n";
    content += "<section>\n<h2 id=\"" + id + "</h2>\n";
    content += section.intro + "<div class=\"scroll\">" + section.content(data) + "</div>\n</section>\n";
  }
  return fill(kSkeleton, {{"title", escapeHtml(data.title)},
                          {"style", kStyle},
                          {"header", header(data) + summaryList(data)},
                          {"navigation", navigation},
                          {"sections", content},
                          {"version", ORBELN_VERSION}});
}

}  // namespace report
