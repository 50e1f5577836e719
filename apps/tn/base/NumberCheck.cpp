#include "apps/tn/base/NumberCheck.h"

#include <cmath>
#include <string>

namespace
{
CLI::Validator Check(bool isZeroAllowed, const char* theName, const std::string& theFault)
{
   return CLI::Validator(
       [=](std::string& theText) {
          double aValue = 0.0;
          const bool isNumber = CLI::detail::lexical_cast(theText, aValue) && std::isfinite(aValue);
          return isNumber && (aValue > 0.0 || (isZeroAllowed && aValue == 0.0)) ? std::string() : theText + theFault;
       },
       theName);
}
} // namespace

CLI::Validator NotNegative()
{
   return Check(true, "NONNEGATIVE", " is no number from 0 up");
}

CLI::Validator Positive()
{
   return Check(false, "POSITIVE", " is no number above 0");
}
