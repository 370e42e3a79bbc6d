#include "coordination/scancsv.h"

#include <QIODevice>
#include <QStringList>

#include <algorithm>
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

QString tooLong(QStringView line)
{
    return QStringLiteral("the line is too long for a scan point: \"%1\"").arg(excerpt(line));
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

namespace {

// The lines of a scan file one by one, up to the first fault.
class PointReader
{
public:
    PointReader(double bandLowMHz, double bandHighMHz) : m_low(bandLowMHz), m_high(bandHighMHz) {}

    // False once a line was refused: nothing after it is looked at.
    bool take(QStringView rawLine);
    // A line of which only its start was read, as it is already too long.
    void refuseLong(QStringView start) { fail(++m_line, tooLong(start.trimmed())); }
    ScanCsvResult finish();

private:
    void fail(int lineNumber, const QString &what)
    {
        m_result.errorLine = lineNumber;
        m_result.error = lineError(lineNumber, what);
    }

    double m_low;
    double m_high;
    ScanCsvResult m_result;
    bool m_first = true;
    int m_line = 0;
};

bool PointReader::take(QStringView rawLine)
{
    const QStringView line = rawLine.trimmed();
    ++m_line;
    if (line.isEmpty())
        return true;
    // No point line is anywhere near this long; one that is, is not a scan,
    // and nothing more of it is looked at.
    if (line.size() > kLongestScanLine) {
        fail(m_line, tooLong(line));
        return false;
    }
    const bool wasFirst = m_first;
    m_first = false;
    if (wasFirst && line.compare(kHeader, Qt::CaseInsensitive) == 0)
        return true;

    const bool semicolons = line.contains(QLatin1Char(';'));
    const QList<QStringView> fields = line.split(semicolons ? QLatin1Char(';') : QLatin1Char(','));
    if (fields.size() != 2) {
        fail(m_line, QStringLiteral("expected 2 columns (frequency in MHz, level in dBm), found %1.")
                         .arg(fields.size()));
        return false;
    }
    ScanPoint point;
    bool numbers = readNumber(fields.at(0).toString(), semicolons, point.frequencyMHz) &&
                   readNumber(fields.at(1).toString(), semicolons, point.levelDbm);
    if (!numbers) {
        fail(m_line, QStringLiteral("\"%1\" is not a frequency and a level.").arg(excerpt(line)));
        return false;
    }
    if (point.frequencyMHz < m_low - kBandSlack || point.frequencyMHz > m_high + kBandSlack) {
        fail(m_line, QStringLiteral("%1 MHz is outside the band %2 - %3 MHz.")
                         .arg(QString::number(point.frequencyMHz, 'f', 3), QString::number(m_low, 'f', 3),
                              QString::number(m_high, 'f', 3)));
        return false;
    }
    if (point.levelDbm < kLowestDbm || point.levelDbm > kHighestDbm) {
        fail(m_line, QStringLiteral("%1 dBm is not a level a receiver can measure (%2 to +%3 dBm).")
                         .arg(excerpt(fields.at(1).trimmed()), QString::number(kLowestDbm),
                              QString::number(kHighestDbm)));
        return false;
    }
    m_result.points.push_back(point);
    return true;
}

ScanCsvResult PointReader::finish()
{
    if (m_result.ok() && m_result.points.empty())
        m_result.error = QStringLiteral("The file holds no scan points.");
    if (!m_result.ok())
        m_result.points.clear();
    return std::move(m_result);
}

} // namespace

ScanCsvResult parseScanCsv(const QString &text, double bandLowMHz, double bandHighMHz)
{
    PointReader reader(bandLowMHz, bandHighMHz);
    for (qsizetype start = 0; start <= text.size();) {
        qsizetype end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        if (!reader.take(QStringView(text).mid(start, end - start)))
            break;
        start = end + 1;
    }
    return reader.finish();
}

ScanCsvResult readScanCsv(QIODevice &in, double bandLowMHz, double bandHighMHz, qint64 maxBytes)
{
    // Room for the blanks and multi-byte characters around a line that is
    // still short enough once trimmed; a line longer than this is refused on
    // what was read of it, so a file of one endless line costs no more.
    constexpr qint64 kLongestRawLine = 4 * kLongestScanLine;
    PointReader reader(bandLowMHz, bandHighMHz);
    qint64 taken = 0;
    while (taken < maxBytes && !in.atEnd()) {
        const QByteArray raw = in.readLine(std::min(kLongestRawLine + 2, maxBytes - taken + 1));
        if (raw.isEmpty())
            break; // a read error ends the file as an end would
        taken += raw.size();
        const QString line = QString::fromUtf8(raw);
        if (!raw.endsWith('\n') && !in.atEnd() && taken < maxBytes) {
            reader.refuseLong(line);
            break;
        }
        if (!reader.take(line))
            break;
    }
    return reader.finish();
}

} // namespace zun
