// One JSON object (RFC 8259) as tn find writes it: the texts among its members by name. What is nested in it is checked
// and left out.
#pragma once

#include <map>
#include <string>

// Throws std::invalid_argument, whose text says where it is no JSON.
std::map<std::string, std::string> ReadJsonLine(const std::string& theLine);
