#include "stationdb/day_code.h"

#include <ctime>

namespace qarvel::stationdb {

int DayCode(int year, int dayOfYear) { return (year % 100) * 1000 + dayOfYear; }

int TodayDayCode() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return DayCode(local.tm_year + 1900, local.tm_yday + 1);
}

std::string DayCodeText(int dayCode) {
    std::string text = std::to_string(dayCode);
    if (dayCode >= 0 && text.size() < 5) text.insert(0, 5 - text.size(), '0');
    return text;
}

int DayCodeDays(int dayCode) { return dayCode % 1000 + (dayCode / 1000) * 365; }

DatabaseAge MasterDatabaseAge(int creationDayCode, int todayDayCode) {
    const int databaseDays = DayCodeDays(creationDayCode);
    int todayYear = todayDayCode / 1000;
    // The deliberate ten-year wrap of the day codes.
    if (todayYear < creationDayCode / 1000) todayYear += 10;
    const int todayDays = todayDayCode % 1000 + todayYear * 365;

    DatabaseAge age;
    if (databaseDays > todayDays + 2) {
        age.dated_ahead = true;
        return age;
    }
    age.months = (todayDays - databaseDays) / 31;
    return age;
}

}  // namespace qarvel::stationdb
