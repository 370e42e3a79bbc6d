#pragma once

#include <QLocale>
#include <QString>

#include <vector>

class QIODevice;

namespace zun {

struct ScanPoint
{
    double frequencyMHz = 0;
    double levelDbm = 0;
};

// Plain: "frequency,level" with a dot, no header, what coordination tools
// import. Spreadsheet: a header line, semicolons and the locale's decimal
// separator.
enum class CsvVariant { Plain, Spreadsheet };

// One point a line: MHz with three decimals, dBm with one.
[[nodiscard]] QString formatScanCsv(const std::vector<ScanPoint> &points, CsvVariant variant,
                                    const QLocale &locale = QLocale());

struct ScanCsvResult
{
    std::vector<ScanPoint> points;
    int errorLine = 0; // 1-based line of the first fault; 0 with no fault or an empty file
    QString error;     // empty when the file was read whole
    [[nodiscard]] bool ok() const { return error.isEmpty(); }
};

// The longest line a scan file may have; a point line needs fewer than 40.
inline constexpr qsizetype kLongestScanLine = 200;

// Reads either variant back. Every point must lie in the band (MHz, both ends
// included) and between -150 and +30 dBm; the first line that does not parse
// stops the reading and is named, with at most 80 of its characters.
[[nodiscard]] ScanCsvResult parseScanCsv(const QString &text, double bandLowMHz, double bandHighMHz);
// The same, line by line from a file, reading no further than the line that
// is refused (of a line too long to be a point, no more than that bound) and
// no more than maxBytes in all.
[[nodiscard]] ScanCsvResult readScanCsv(QIODevice &in, double bandLowMHz, double bandHighMHz,
                                        qint64 maxBytes);

} // namespace zun
