#pragma once
// Day codes: the program's compact dates, used for a master database's
// creation_date and a marker's jdate (a char(5) column).
//
// A day code is year part x 1000 + day of the year (1 to 366), written in five
// characters. Five characters leave two digits for the year part, so the year
// part is the year modulo 100 (2024, day 123 -> 24123; 2005, day 10 -> 5010,
// written "05010"). The age arithmetic counts every year as 365 days and lets
// today's year part wrap by adding 10 when it is smaller than the database's;
// with two-digit year parts that wrap only comes into play at a turn of the
// century, where it makes an old database look dated in the future (and so
// refused). That arithmetic is kept exactly as the program has always done it.

#include <string>

namespace qarvel::stationdb {

// year: full year (2024); dayOfYear: 1 to 366. Returns (year mod 100) x 1000
// + dayOfYear.
int DayCode(int year, int dayOfYear);

// Today's day code from the local calendar.
int TodayDayCode();

// The day code as its five characters ("05010"). Codes below 0 or above
// 99999 are written as they are.
std::string DayCodeText(int dayCode);

// Days counted from the day code's own epoch: (C mod 1000) + (C div 1000) x 365.
int DayCodeDays(int dayCode);

// How old a master database is, from its creation day code and today's.
struct DatabaseAge {
    bool dated_ahead = false;  // more than two days in the future: refused
    int months = 0;            // whole 31-day months since creation (0 when ahead)
};
DatabaseAge MasterDatabaseAge(int creationDayCode, int todayDayCode);

}  // namespace qarvel::stationdb
