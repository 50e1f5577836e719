// The date and time of now where the program runs, as std::put_time writes it: LocalTimeText("%Y%m%d%H%M%S").
#pragma once

#include <string>

std::string LocalTimeText(const char* theFormat);
