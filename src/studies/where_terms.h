#pragma once
// The LIKE patterns of the FM query's WHERE clause, shared by the clause
// builder and by the fast engine's in-memory filter so that both test the
// same patterns.

#include <array>
#include <string_view>

#include "studies/autoscan.h"

namespace qarvel::studies {

// "border_code LIKE 'A'": foreign stations count whatever their status.
inline constexpr std::string_view kBorderPattern = "A";

// The status group's patterns in the clause's order, each with the flag that
// enables it ("VA*" and "RS*" share one flag).
struct StatusPattern {
    bool ScanOptions::*flag;
    std::string_view pattern;
};
inline constexpr std::array<StatusPattern, 7> kStatusPatterns = {{
    {&ScanOptions::statusLI, "LI*"},
    {&ScanOptions::statusCP, "CP*"},
    {&ScanOptions::statusAP, "AP*"},
    {&ScanOptions::statusAD, "AD*"},
    {&ScanOptions::statusVA, "VA*"},
    {&ScanOptions::statusVA, "RS*"},
    {&ScanOptions::statusDE, "DE*"},
}};

// "asd_service NOT LIKE 'FS' AND asd_service NOT LIKE 'FB'": translators and
// boosters never count.
inline constexpr std::array<std::string_view, 2> kExcludedServicePatterns = {"FS", "FB"};

}  // namespace qarvel::studies
