#pragma once

#include "coordination/scancsv.h"

#include <QString>

#include <vector>

namespace zun {

struct PlanEntry
{
    int address = 0;
    QString name;
    int frequencyKHz = 0;
};

// "address,name,frequency_mhz" with a header line; names with a comma or a
// quote are quoted.
[[nodiscard]] QString exportPlanCsv(const std::vector<PlanEntry> &entries);

// One frequency a line, MHz with three decimals: the form coordination tools import.
[[nodiscard]] QString exportFrequencyList(const std::vector<int> &frequenciesKHz);

struct FrequencyListResult
{
    std::vector<int> frequenciesKHz;
    QString error; // "Line 3: ..." for the first line that is not a frequency
    [[nodiscard]] bool ok() const { return error.isEmpty(); }
};

// Reads either export back: one MHz value a line, or CSV whose header names a
// "frequency_mhz" column (else the first column). Blank lines are skipped;
// values must lie on the 25 kHz raster.
[[nodiscard]] FrequencyListResult importFrequencyList(const QString &text);

// The scan points above the threshold, as signals to keep carriers off.
[[nodiscard]] std::vector<int> signalsAbove(const std::vector<ScanPoint> &points, double thresholdDbm);

} // namespace zun
