// Mean and standard deviation.
#pragma once

#include <vector>

double average(const std::vector<double>& values);            ///< 0 for none
double standardDeviation(const std::vector<double>& values);  ///< of a sample; 0 below two
