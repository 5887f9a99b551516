// The self-describing text table (REMARK, DATA, VARS, FORMAT lines, then rows) that every input,
// reference table and most outputs share.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Takes the rows of a table file one by one instead of keeping them in a table.
class RowSink {
 public:
  virtual ~RowSink() = default;
  /// The columns by index, after every VARS and FORMAT line: both make all rows before them void.
  virtual void redefine(const std::map<std::int32_t, std::string>& varNames) = 0;
  /// One row, a cell per column. Behind every cell stand a white-space character and LineReader::kPadding
  /// bytes.
  virtual void add(const std::vector<std::string_view>& cells) = 0;
};

/// Why a table file could not be read.
struct TableError {
  std::string file;
  std::int64_t line = 0;  ///< from 1; 0 when the file cannot be opened
  std::string what;

  std::string text() const { return file + (line > 0 ? ":" + std::to_string(line) : "") + ": " + what; }
};

/// A table in memory. Every cell is text; numbers are converted when a table is written or a stage reads
/// them. Rows are numbered by the caller or, when read from a file, from 1.
class GDB {
 public:
  using Row = std::map<std::string, std::string>;  ///< column name -> cell text

  GDB() = default;
  explicit GDB(const std::string& file);

  /// Reads `file` into a freshly constructed table; the reason when it cannot be opened or a field format is
  /// invalid.
  [[nodiscard]] std::optional<TableError> read(const std::string& file);
  /// The same, but the rows go to `rows` and `entries` stays empty.
  [[nodiscard]] std::optional<TableError> read(const std::string& file, RowSink& rows);
  /// The readings of the core, where such a table ends the process (exit status 0) with a message.
  void loadGDB(const std::string& file);
  void loadGDB(const std::string& file, RowSink& rows);
  /// The canonical layout.
  std::string toText() const;
  /// Writes it; a file that cannot be opened or written whole is reported. False for the latter only.
  bool saveGDB(const std::string& file) const;

  void VARS_str_parser(std::string_view text);  ///< defines the columns; drops all rows
  /// Defines the field formats; drops all rows. Ends the process (exit status 0) when one is invalid.
  void FORMAT_str_parser(std::string_view text);
  void addVAR(const std::string& name, const std::string& format);
  /// Sets one cell, creating the row; ends the process (exit status 0) for an undeclared column.
  void setEntry(std::int32_t row, const std::string& name, std::string_view value);

  /// Copy of the n-th row (from 1, ascending row number) whose cell `key` equals `value`; empty when none.
  Row getEntry(const std::string& key, std::string_view value, std::int32_t n) const;
  Row getEntry(const std::string& key1, std::string_view value1, const std::string& key2,
               std::string_view value2, std::int32_t n) const;
  /// As getEntry with n = 1, without the copy; nullptr when none matches. Valid until the table changes.
  const Row* findRow(const std::string& key, std::string_view value) const;
  const Row* findRow(const std::string& key1, std::string_view value1, const std::string& key2,
                     std::string_view value2) const;
  /// Text of a cell of `row`, empty when the row lacks it.
  static const std::string& cell(const Row& row, const std::string& name);

  void addRemark(std::string_view text);
  void setData(std::string_view key, std::string_view value);
  /// All values of an upper-case key, each with one leading blank, joined; empty when absent.
  std::string getData(std::string_view key) const;

  static bool checkFormat(std::string_view format);
  static std::string simplifyWhiteSpace(std::string_view s);
  static std::vector<std::string> split(std::string_view separator, std::string_view s);

  std::string fileName;    ///< path of the last loadGDB
  std::string formatLine;  ///< raw text of the last FORMAT line after the keyword
  std::string varsLine;    ///< simplified text of the last VARS line after the keyword
  std::int32_t varCount = 0;
  std::int32_t firstResid = 1;                     ///< from DATA FIRST_RESID
  std::map<std::int32_t, std::string> residList;   ///< residue number -> one-letter code (DATA SEQUENCE)
  std::list<std::string> remarks;                  ///< in file or insertion order
  std::list<std::string> dataLines;                ///< key, one blank, value
  std::map<std::int32_t, std::string> varNames;    ///< column index from 0
  std::map<std::int32_t, std::string> varFormats;  ///< with the text that followed, up to the next '%'
  std::map<std::int32_t, Row> entries;             ///< row number -> row

 private:
  std::string defineFormats(std::string_view text);  ///< what is wrong with the first invalid one

  std::int32_t lastSet = -1;  // column of the last setEntry
};
