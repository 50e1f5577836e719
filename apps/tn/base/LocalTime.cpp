#include "apps/tn/base/LocalTime.h"

#include <ctime>
#include <iomanip>
#include <sstream>

std::string LocalTimeText(const char* theFormat)
{
   const std::time_t aNow = std::time(nullptr);
   std::tm aTime{};
   localtime_r(&aNow, &aTime);
   std::ostringstream aText;
   aText << std::put_time(&aTime, theFormat);
   return aText.str();
}
