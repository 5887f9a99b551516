// Line kinds and FORMAT pieces of the table format, shared by both table readers.
#include "tables/tableLines.h"

#include <algorithm>

#include "tables/text.h"

LineKind lineKind(std::string_view firstToken) {
  if (firstToken.size() != kDataKeyword && firstToken.size() != kRemarkKeyword) return LineKind::Other;
  const std::string keyword = text::upper(firstToken);
  if (keyword == "REMARK") return LineKind::Remark;
  if (keyword == "DATA") return LineKind::Data;
  if (keyword == "VARS") return LineKind::Vars;
  if (keyword == "FORMAT") return LineKind::Format;
  return LineKind::Other;
}

std::string_view tailFrom(std::string_view line, std::size_t from) {
  return line.substr(std::min(from, line.size()));
}

std::vector<std::string> formatPieces(std::string_view format, std::size_t count) {
  if (static_cast<std::size_t>(std::count(format.begin(), format.end(), '%')) != count) return {};
  // The blank in front makes the text before the first '%' a piece of its own, whatever it is.
  const std::vector<std::string> cut = text::split('%', " " + std::string(format));
  std::vector<std::string> pieces(count, "%");
  for (std::size_t i = 0; i < count && i + 1 < cut.size(); ++i) pieces[i] += cut[i + 1];
  return pieces;
}
