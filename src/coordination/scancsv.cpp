#include "coordination/scancsv.h"

#include <QStringList>

#include <cmath>

namespace zun {

namespace {
const QString kHeader = QStringLiteral("Frequency (MHz);Level (dBm)");
// Half the last printed digit, so a band end written with three decimals still fits.
constexpr double kBandSlack = 0.0005;
// Far beyond what a receiver measures either way, yet any real scan fits.
constexpr double kLowestDbm = -150.0;
constexpr double kHighestDbm = 30.0;

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

// A message quotes no more of a line than a reader can take in.
QString excerpt(QStringView line)
{
    constexpr qsizetype kShown = 80;
    return line.size() <= kShown ? line.toString() : line.left(kShown).toString() + QStringLiteral("...");
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
    const auto fail = [&](int lineNumber, const QString &what) {
        result.errorLine = lineNumber;
        result.error = lineError(lineNumber, what);
    };
    bool first = true;
    int lineNumber = 0;
    for (qsizetype start = 0; start <= text.size() && result.ok();) {
        qsizetype end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        const QStringView line = QStringView(text).mid(start, end - start).trimmed();
        start = end + 1;
        ++lineNumber;
        if (line.isEmpty())
            continue;
        // No point line is anywhere near this long; one that is, is not a scan,
        // and nothing more of it is looked at.
        if (line.size() > kLongestScanLine) {
            fail(lineNumber,
                 QStringLiteral("the line is too long for a scan point: \"%1\"").arg(excerpt(line)));
            break;
        }
        const bool wasFirst = first;
        first = false;
        if (wasFirst && line.compare(kHeader, Qt::CaseInsensitive) == 0)
            continue;

        const bool semicolons = line.contains(QLatin1Char(';'));
        const QList<QStringView> fields = line.split(semicolons ? QLatin1Char(';') : QLatin1Char(','));
        if (fields.size() != 2) {
            fail(lineNumber, QStringLiteral("expected 2 columns (frequency in MHz, level in dBm), found %1.")
                                 .arg(fields.size()));
            break;
        }
        ScanPoint point;
        bool numbers = readNumber(fields.at(0).toString(), semicolons, point.frequencyMHz) &&
                       readNumber(fields.at(1).toString(), semicolons, point.levelDbm);
        if (!numbers) {
            fail(lineNumber, QStringLiteral("\"%1\" is not a frequency and a level.").arg(excerpt(line)));
            break;
        }
        if (point.frequencyMHz < bandLowMHz - kBandSlack || point.frequencyMHz > bandHighMHz + kBandSlack) {
            fail(lineNumber,
                 QStringLiteral("%1 MHz is outside the band %2 - %3 MHz.")
                     .arg(QString::number(point.frequencyMHz, 'f', 3), QString::number(bandLowMHz, 'f', 3),
                          QString::number(bandHighMHz, 'f', 3)));
            break;
        }
        if (point.levelDbm < kLowestDbm || point.levelDbm > kHighestDbm) {
            fail(lineNumber, QStringLiteral("%1 dBm is not a level a receiver can measure (%2 to +%3 dBm).")
                                 .arg(excerpt(fields.at(1).trimmed()), QString::number(kLowestDbm),
                                      QString::number(kHighestDbm)));
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
