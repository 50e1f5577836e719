// The log of a node: a line at a time, with whom it is about. Any thread.
#pragma once

#include <string>

class PDU_Service;

namespace NodeLog
{
// theText may hold what a peer has sent.
void Line(const PDU_Service& theService, const std::string& theText);
} // namespace NodeLog

// The lines that a peer can cause as often as it likes: the first ones of an association. One thread.
class LimitedLog
{
public:
   void Line(const PDU_Service& theService, const std::string& theText);

private:
   unsigned long itsCount = 0;
};
