#include "coordination/planfiles.h"

#include "coordination/guards.h"

#include <QStringList>

#include <cmath>

namespace zun {

namespace {
QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

// Splits one CSV line, honouring quotes, so a name with a comma keeps the
// frequency in its own column.
QStringList csvFields(const QString &line)
{
    QStringList fields;
    QString field;
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar ch = line.at(i);
        if (quoted) {
            if (ch == QLatin1Char('"') && i + 1 < line.size() && line.at(i + 1) == QLatin1Char('"')) {
                field += ch;
                ++i;
            } else if (ch == QLatin1Char('"')) {
                quoted = false;
            } else {
                field += ch;
            }
        } else if (ch == QLatin1Char('"')) {
            quoted = true;
        } else if (ch == QLatin1Char(',')) {
            fields << field;
            field.clear();
        } else {
            field += ch;
        }
    }
    fields << field;
    return fields;
}
} // namespace

QString exportPlanCsv(const std::vector<PlanEntry> &entries)
{
    QString text = QStringLiteral("address,name,frequency_mhz\n");
    for (const PlanEntry &e : entries)
        text += QString::number(e.address) + QLatin1Char(',') + csvField(e.name) + QLatin1Char(',') +
                mhzText(e.frequencyKHz) + QLatin1Char('\n');
    return text;
}

QString exportFrequencyList(const std::vector<int> &frequenciesKHz)
{
    QString text;
    for (int f : frequenciesKHz)
        text += mhzText(f) + QLatin1Char('\n');
    return text;
}

FrequencyListResult importFrequencyList(const QString &text)
{
    FrequencyListResult result;
    const QStringList lines = text.split(QLatin1Char('\n'));
    int column = 0;
    bool first = true;
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty())
            continue;
        const QStringList fields = csvFields(line);
        if (first) {
            first = false;
            const qsizetype named = fields.indexOf(QStringLiteral("frequency_mhz"));
            if (named >= 0) {
                column = static_cast<int>(named);
                continue;
            }
        }
        const std::optional<int> kHz = column < fields.size() ? parseMHz(fields.at(column)) : std::nullopt;
        if (!kHz || *kHz % kRasterKHz != 0) {
            result.error = QStringLiteral("Line %1: \"%2\" is not a frequency in MHz on the 25 kHz raster.")
                               .arg(i + 1)
                               .arg(line);
            result.frequenciesKHz.clear();
            return result;
        }
        result.frequenciesKHz.push_back(*kHz);
    }
    return result;
}

std::vector<int> signalsAbove(const std::vector<ScanPoint> &points, double thresholdDbm)
{
    std::vector<int> out;
    for (const ScanPoint &p : points)
        if (p.levelDbm > thresholdDbm)
            out.push_back(static_cast<int>(std::lround(p.frequencyMHz * 1000.0)));
    return out;
}

} // namespace zun
