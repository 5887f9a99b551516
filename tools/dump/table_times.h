// Loading time of every table of an installation.
#pragma once

#include <map>
#include <string>

struct TableShape {
  int rows = 0;
  int inputs = 0;  ///< columns of a weight table that are named by a number
};
TableShape shapeOfTable(const std::string& file);

/// Reads each table of the folder the way the program does, three times, and writes one tab-separated row a
/// table to standard output: name, bytes, data rows, milliseconds of the fastest reading. False when the
/// folder holds none.
bool reportTableTimes(const std::string& folder, const std::map<int, std::string>& atomNames);
