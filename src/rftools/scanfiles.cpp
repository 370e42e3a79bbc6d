#include "rftools/scanfiles.h"

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "platform/regularfile.h"
#include "rftools/scanplot.h"
#include "rftools/scanstate.h"
#include "rftools/scantab.h"

#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QSaveFile>

#include <algorithm>

namespace zun {

namespace {
const QString kCsvFilter = QStringLiteral("Scan CSV(*.csv)|*.csv");
const QString kPngFilter = QStringLiteral("PNG Image(*.png)|*.png");
constexpr qint64 kLargestImport = 16 * 1024 * 1024;

enum Trace { Current = 0, MaxHold = 1, MinHold = 2 };

QString withSuffix(const QString &file, const QString &suffix)
{
    return QFileInfo(file).suffix().isEmpty() ? file + QLatin1Char('.') + suffix : file;
}

// The inverse of the level scale: -107..-47 dBm is 0..99.
double dbmToLevel(double dbm)
{
    return (dbm + 107.0) * 99.0 / 60.0;
}
} // namespace

ScanFiles::ScanFiles(Context &ctx, RfToolsHost &host, ScanState &state, SpectrumTab &tab, QObject *parent)
    : QObject(parent), m_ctx(ctx), m_host(host), m_state(state), m_tab(tab)
{
    m_tab.plot()->setComparisonTraces(&m_state.holds, &m_state.reference);
}

double ScanFiles::bandStop() const
{
    return pointFrequency(m_host.bandStart(), m_state.pointCount);
}

std::vector<ScanPoint> ScanFiles::tracePoints(int trace) const
{
    const double start = m_host.bandStart();
    std::vector<ScanPoint> points;
    const bool hold = trace == MaxHold || trace == MinHold;
    const auto &levels =
        hold ? m_state.holds.trace(trace == MaxHold ? HoldTraces::Max : HoldTraces::Min) : m_state.levels;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        // The floor a coarse step fills in ahead of the sweep was never measured.
        const bool taken =
            hold ? levels[i] != HoldTraces::kNone : i < m_state.measured.size() && m_state.measured[i];
        if (taken)
            points.push_back({pointFrequency(start, static_cast<int>(i)), levelDbm(levels[i])});
    }
    return points;
}

void ScanFiles::exportScan()
{
    const auto choice = m_ctx.platform.dialogs.chooseOptions(
        QStringLiteral("Export Scan"),
        {{QStringLiteral("Trace"), QStringLiteral("Current"), QStringLiteral("Max hold"),
          QStringLiteral("Min hold")},
         {QStringLiteral("Format"), QStringLiteral("Plain CSV (frequency tools)"),
          QStringLiteral("Spreadsheet CSV (header, semicolons, local decimals)")}});
    if (!choice || choice->size() != 2)
        return;
    const std::vector<ScanPoint> points = tracePoints(choice->at(0));
    if (points.empty()) {
        m_ctx.platform.dialogs.message(QStringLiteral("The chosen trace holds no points to export."));
        return;
    }
    const QString chosen = m_ctx.platform.dialogs.saveFileName(kCsvFilter);
    if (chosen.isEmpty())
        return;
    const QString file = withSuffix(chosen, QStringLiteral("csv"));
    const CsvVariant variant = choice->at(1) == 1 ? CsvVariant::Spreadsheet : CsvVariant::Plain;
    QSaveFile out(file);
    const QByteArray text = formatScanCsv(points, variant).toUtf8();
    if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size() || !out.commit())
        m_ctx.platform.dialogs.message(
            QStringLiteral("The scan could not be written to %1: %2").arg(file, out.errorString()));
}

void ScanFiles::importReference()
{
    const QString file = m_ctx.platform.dialogs.openFileName(kCsvFilter);
    if (file.isEmpty())
        return;
    QFile in;
    if (const QString error = openRegularFile(in, file); !error.isEmpty()) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 could not be read: %2").arg(file, error));
        return;
    }
    if (in.size() > kLargestImport) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 is too large to be a scan.").arg(file));
        return;
    }
    const ScanCsvResult result = readScanCsv(in, m_host.bandStart(), bandStop(), kLargestImport);
    if (!result.ok()) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 was not imported.\n%2").arg(file, result.error));
        return;
    }
    ReferenceTrace reference;
    reference.reserve(result.points.size());
    const double start = m_host.bandStart();
    for (const ScanPoint &p : result.points)
        reference.emplace_back((p.frequencyMHz - start) / 0.025, dbmToLevel(p.levelDbm));
    std::sort(reference.begin(), reference.end(),
              [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    m_state.reference = std::move(reference);
    m_tab.plot()->referenceChanged();
    redraw();
}

void ScanFiles::savePng(PlotCanvas *plot)
{
    const QString chosen = m_ctx.platform.dialogs.saveFileName(kPngFilter);
    if (chosen.isEmpty())
        return;
    const QString file = withSuffix(chosen, QStringLiteral("png"));
    // grab() renders at the widget's pixel ratio, marker and squelch line included.
    if (!plot->grab().save(file, "PNG"))
        m_ctx.platform.dialogs.message(QStringLiteral("The picture could not be saved as %1.").arg(file));
}

void ScanFiles::holdToggled(HoldTraces::Kind kind, bool on)
{
    m_state.holds.setEnabled(kind, on);
    redraw();
}

void ScanFiles::redraw()
{
    SpectrumPlot *plot = m_tab.plot();
    const bool measured =
        std::any_of(m_state.levels.begin(), m_state.levels.end(), [](auto v) { return v > 0; });
    if (measured) {
        plot->drawTrace(m_state.levels, m_state.pointCount, m_state.xScale);
        plot->present();
    } else {
        plot->drawComparisonOnly(m_state.xScale);
    }
}

} // namespace zun
