// The log of a node: a line at a time, with whom it is about. Any thread.
#pragma once

#include <string>

class PDU_Service;

namespace NodeLog
{
// theText may hold what a peer has sent.
void Line(const PDU_Service& theService, const std::string& theText);
} // namespace NodeLog
