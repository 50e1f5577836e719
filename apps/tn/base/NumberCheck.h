// Checks for options that are numbers without an upper limit. Those of CLI11 tell the largest double in 300 digits.
#pragma once

#include <CLI/CLI.hpp>

// 0 or more.
CLI::Validator NotNegative();

// More than 0.
CLI::Validator Positive();
