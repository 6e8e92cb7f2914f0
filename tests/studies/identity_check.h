#pragma once
// Runs one scan through two engines and expects the same result bit for bit.

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "studies/autoscan.h"

namespace qarvel::studies::test {

// Returns how many channels some station limited (minimum below 350), so
// that callers can check that the comparison was not vacuous.
inline int ExpectSameScan(ClearanceEngine& reference, ClearanceEngine& fast,
                          const ScanTarget& target, const ScanOptions& options) {
    const ScanResult a = ScanChannels(reference, target, options);
    const ScanResult b = ScanChannels(fast, target, options);
    const std::string where =
        "target " + std::to_string(target.lat) + ", " + std::to_string(target.lon) + " class " +
        std::to_string(target.stationClass) + " intl " + std::to_string(target.intlClass);
    EXPECT_EQ(a.minima.size(), b.minima.size()) << where;
    int limited = 0;
    for (std::size_t i = 0; i < a.minima.size() && i < b.minima.size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(a.minima[i]),
                  std::bit_cast<std::uint32_t>(b.minima[i]))
            << where << " channel " << kFirstScanChannel + static_cast<int>(i) << ": "
            << a.minima[i] << " vs " << b.minima[i];
        if (a.minima[i] < kNoStationClearance) ++limited;
    }
    EXPECT_EQ(a.lines, b.lines) << where;
    EXPECT_EQ(a.openings, b.openings) << where;
    EXPECT_EQ(a.status, b.status) << where;
    return limited;
}

}  // namespace qarvel::studies::test
