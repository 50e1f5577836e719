#include "apps/tn/base/LocalTime.h"

#include <ctime>

std::string LocalTimeText(const char* theFormat)
{
   const std::time_t aNow = std::time(nullptr);
   std::tm aTime{};
   localtime_r(&aNow, &aTime);
   char aText[64];
   return {aText, std::strftime(aText, sizeof aText, theFormat, &aTime)};
}
