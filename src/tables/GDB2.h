// Typed reader of large numeric tables (network weights): cells are converted once, while reading.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// One data row.
struct LineNode {
  /// One cell; strings live in the node's `strings`, addressed by `integer`.
  struct Val {
    std::int32_t typeCode = 0;  ///< 0 integer, 1 float, 2 string
    union {
      std::int32_t integer = 0;
      float real;
    };
  };
  std::vector<Val> values;           ///< in column order
  std::vector<std::string> strings;  ///< texts of the string cells
  std::int32_t index = 0;            ///< row number from 1

  /// The cell of a column, counted from 1, as a single-precision number; 9999 for an unknown column.
  float number(std::int32_t index1) const {
    if (index1 < 1 || static_cast<std::size_t>(index1) > values.size()) return kNoValue;
    const Val& cell = values[static_cast<std::size_t>(index1) - 1];
    return cell.typeCode == kFloat ? cell.real : otherNumber(cell);
  }

  static constexpr std::int32_t kFloat = 1;
  static constexpr float kNoValue = 9999.0F;

 private:
  float otherNumber(const Val& cell) const;
};

/// A table of typed rows. Format errors are reported on standard error and collected in `errorText`; the
/// process goes on and `lineCount` tells whether rows were read.
class GDB2 {
 public:
  explicit GDB2(const std::string& file);
  GDB2(const GDB2&) = delete;
  GDB2& operator=(const GDB2&) = delete;

  bool loadGDB(const std::string& file);
  /// The cell as a single-precision number; 9999 for a row outside 1..lineCount or an unknown column.
  float getFloatNodeVal(std::int32_t row, std::string_view name) const;
  /// The same by column index counted from 1 (0 or less = unknown), for callers that look names up once.
  float getFloatNodeVal(std::int32_t row, std::int32_t index1) const;
  const LineNode* getLineEntry(std::int32_t row) const;    ///< nullptr outside 1..lineCount
  std::int32_t getVarIndex1(std::string_view name) const;  ///< from 1; 0 = no such column
  bool varsStrParser(std::string_view text);
  bool formatStrParser(std::string_view text);
  bool initNodes();

  std::string fileName;
  std::string formatLine;
  std::string varsLine;
  std::int32_t varCount = 0;
  std::int32_t lineCount = 0;
  std::int32_t firstResid = 1;
  std::int32_t lastResid = -9999;
  std::string errorText;
  std::map<std::int32_t, std::string> residList;
  std::vector<std::string> headerLines;
  std::map<std::int32_t, std::string> varNames;               ///< index from 0
  std::map<std::string, std::int32_t, std::less<>> varIndex;  ///< index from 1, the later of equal names
  std::map<std::int32_t, std::string> varFormats;
  std::vector<std::int32_t> varTypes;
  std::vector<LineNode> lineEntries;
};
