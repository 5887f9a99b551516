// What no protein exceeds: larger numbers are mistakes in the input and end the run.
#pragma once

#include <cstddef>
#include <string>

/// The longest known chain has about 35,000 residues.
inline constexpr int kLongestChain = 40000;
/// Residue numbers within it leave room for neighbours and chain ends in an int.
inline constexpr int kLargestResid = 2'000'000'000;

/// Writes `message` to standard error and ends the process with exit status 255.
[[noreturn]] void refuse(const std::string& message);

/// Refuses a chain of more than kLongestChain residues; `source` says where it stands.
void requireChainLength(std::size_t residues, const std::string& source);

/// Refuses a residue number of the table `file` outside -kLargestResid..kLargestResid.
void requireResid(int resid, const std::string& file);
