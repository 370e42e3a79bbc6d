#include "rftools/scancsv.h"

#include <QStringList>

#include <cmath>

namespace zun {

namespace {
const QString kHeader = QStringLiteral("Frequency (MHz);Level (dBm)");
// Half the last printed digit, so a band end written with three decimals still fits.
constexpr double kBandSlack = 0.0005;

// Only the decimal separator follows the locale; digits and sign stay ASCII
// so that the file reads back anywhere.
QString spreadsheetNumber(const QLocale &locale, double value, int decimals)
{
    return QString::number(value, 'f', decimals).replace(QLatin1Char('.'), locale.decimalPoint());
}

// Dot or comma decimals are both taken, so a file written under either locale reads back.
bool readNumber(QString field, bool decimalComma, double &value)
{
    field = field.trimmed();
    if (decimalComma)
        field.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    value = QLocale::c().toDouble(field, &ok);
    return ok && std::isfinite(value);
}

QString lineError(int line, const QString &what)
{
    return QStringLiteral("Line %1: %2").arg(line).arg(what);
}
} // namespace

QString formatScanCsv(const std::vector<ScanPoint> &points, CsvVariant variant, const QLocale &locale)
{
    QString text;
    text.reserve(static_cast<qsizetype>(points.size()) * 18 + 32);
    if (variant == CsvVariant::Spreadsheet)
        text += kHeader + QLatin1Char('\n');
    for (const ScanPoint &p : points) {
        if (variant == CsvVariant::Plain) {
            text += QString::number(p.frequencyMHz, 'f', 3) + QLatin1Char(',') +
                    QString::number(p.levelDbm, 'f', 1);
        } else {
            text += spreadsheetNumber(locale, p.frequencyMHz, 3) + QLatin1Char(';') +
                    spreadsheetNumber(locale, p.levelDbm, 1);
        }
        text += QLatin1Char('\n');
    }
    return text;
}

ScanCsvResult parseScanCsv(const QString &text, double bandLowMHz, double bandHighMHz)
{
    ScanCsvResult result;
    const QStringList lines = text.split(QLatin1Char('\n'));
    bool first = true;
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty())
            continue;
        const int lineNumber = i + 1;
        const bool wasFirst = first;
        first = false;
        if (wasFirst && line.compare(kHeader, Qt::CaseInsensitive) == 0)
            continue;

        const bool semicolons = line.contains(QLatin1Char(';'));
        const QStringList fields = line.split(semicolons ? QLatin1Char(';') : QLatin1Char(','));
        if (fields.size() != 2) {
            result.errorLine = lineNumber;
            result.error =
                lineError(lineNumber, QStringLiteral("expected 2 columns (frequency in MHz, level in "
                                                     "dBm), found %1.")
                                          .arg(fields.size()));
            break;
        }
        ScanPoint point;
        bool numbers = readNumber(fields.at(0), semicolons, point.frequencyMHz) &&
                       readNumber(fields.at(1), semicolons, point.levelDbm);
        if (!numbers) {
            result.errorLine = lineNumber;
            result.error =
                lineError(lineNumber, QStringLiteral("\"%1\" is not a frequency and a level.").arg(line));
            break;
        }
        if (point.frequencyMHz < bandLowMHz - kBandSlack || point.frequencyMHz > bandHighMHz + kBandSlack) {
            result.errorLine = lineNumber;
            result.error = lineError(lineNumber, QStringLiteral("%1 MHz is outside the band %2 - %3 MHz.")
                                                     .arg(QString::number(point.frequencyMHz, 'f', 3),
                                                          QString::number(bandLowMHz, 'f', 3),
                                                          QString::number(bandHighMHz, 'f', 3)));
            break;
        }
        result.points.push_back(point);
    }
    if (result.ok() && result.points.empty())
        result.error = QStringLiteral("The file holds no scan points.");
    if (!result.ok())
        result.points.clear();
    return result;
}

} // namespace zun
