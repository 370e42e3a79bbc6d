#include "planning/planwindow.h"

#include "coordination/guards.h"
#include "coordination/planfiles.h"
#include "coordination/planinputs.h"
#include "core/context.h"
#include "core/tvchannels.h"
#include "planning/bandview.h"
#include "session/session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace zun {

namespace {
// The plan gets about a second of work, in slices short enough that the
// window stays responsive between them.
constexpr int kSliceMs = 25;
constexpr int kBudgetMs = 1000;
constexpr int kDefaultLowKHz = 470000;
constexpr int kDefaultHighKHz = 608000;

template <typename W> W *named(W *w, const QString &name)
{
    w->setObjectName(name);
    w->setAccessibleDescription(name);
    return w;
}

QTableWidgetItem *cell(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}
} // namespace

PlanWindow::PlanWindow(Session &session, QWidget *parent)
    : QWidget(parent, Qt::Window), m_session(session), m_ctx(session.context())
{
    setObjectName(QStringLiteral("frmFreqPlan"));
    setWindowTitle(QStringLiteral("Frequency Plan"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    m_table = named(new QTableWidget(0, 8, this), QStringLiteral("tblPlan"));
    m_table->setHorizontalHeaderLabels({QStringLiteral("Lock"), QStringLiteral("Address"),
                                        QStringLiteral("Name"), QStringLiteral("Band (MHz)"),
                                        QStringLiteral("Frequency"), QStringLiteral("State"),
                                        QStringLiteral("Proposed"), QStringLiteral("Deploy")});
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(ColState, QHeaderView::Stretch);
    connect(m_table, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *item) {
        if (item->column() != ColLock || item->row() >= static_cast<int>(m_line.size()))
            return;
        const int address = m_line[static_cast<std::size_t>(item->row())].address;
        if (item->checkState() == Qt::Checked)
            m_lockedAddresses.insert(address);
        else
            m_lockedAddresses.remove(address);
    });
    m_band = new BandView(this);

    auto *splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(m_table);
    splitter->addWidget(m_band);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);

    m_status = named(new QLabel(this), QStringLiteral("lblPlanStatus"));
    m_status->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(buildControls());
    layout->addWidget(splitter, 1);
    layout->addWidget(m_status);
    layout->addWidget(buildButtons());

    m_computeTimer.setInterval(0);
    connect(&m_computeTimer, &QTimer::timeout, this, &PlanWindow::computeSlice);
    // Many changes come in one poll pass; the table is rebuilt once after them.
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    connect(&m_refreshTimer, &QTimer::timeout, this, &PlanWindow::refresh);
    ReceiverBus &bus = m_ctx.bus;
    for (const auto signal : {&ReceiverBus::receiverChanged, &ReceiverBus::receiverFound,
                              &ReceiverBus::cameBack, &ReceiverBus::wentOffline})
        connect(&bus, signal, this, &PlanWindow::scheduleRefresh);
    connect(&session, &Session::receiversDetected, this, &PlanWindow::scheduleRefresh);
    connect(&session, &Session::receiversReconnected, this, &PlanWindow::scheduleRefresh);
    connect(&session.lastScan(), &ScanMemory::changed, this, &PlanWindow::scheduleRefresh);
    connect(&session.deploy(), &FrequencyDeploy::receiverDeployed, this, &PlanWindow::showOutcome);
    connect(&session.deploy(), &FrequencyDeploy::finished, this, &PlanWindow::deployDone);
    resize(980, 640);
    refresh();
}

QWidget *PlanWindow::buildControls()
{
    auto *box = new QWidget(this);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new QLabel(QStringLiteral("Guards:"), box));
    m_guards = named(new QComboBox(box), QStringLiteral("cboGuards"));
    m_guards->addItems({QStringLiteral("standard"), QStringLiteral("tight"), QStringLiteral("robust")});
    m_guards->setToolTip(
        QStringLiteral("standard: C 350, T3 100, X3 50, T5 50 kHz\n"
                       "tight: C 250, T3 50, X3 25, T5 0\nrobust: C 400, T3 150, X3 75, T5 75"));
    row->addWidget(m_guards);
    m_useTv = named(new QCheckBox(QStringLiteral("TV channels in use:"), box), QStringLiteral("chkTv"));
    m_tvChannels = named(new QLineEdit(box), QStringLiteral("txtTvChannels"));
    m_tvChannels->setPlaceholderText(QStringLiteral("21, 22"));
    m_tvChannels->setMaximumWidth(90);
    row->addWidget(m_useTv);
    row->addWidget(m_tvChannels);
    m_useScan = named(new QCheckBox(QStringLiteral("Scans above"), box), QStringLiteral("chkScan"));
    m_threshold = named(new QDoubleSpinBox(box), QStringLiteral("spnThreshold"));
    m_threshold->setRange(-150, 30);
    m_threshold->setDecimals(1);
    m_threshold->setValue(-80);
    m_threshold->setSuffix(QStringLiteral(" dBm"));
    row->addWidget(m_useScan);
    row->addWidget(m_threshold);
    auto *files =
        named(new QPushButton(QStringLiteral("Scan Files..."), box), QStringLiteral("cmdScanFiles"));
    connect(files, &QPushButton::clicked, this, &PlanWindow::addScanFile);
    m_scanFiles = named(new QLabel(box), QStringLiteral("lblScanFiles"));
    row->addWidget(files);
    row->addWidget(m_scanFiles);
    row->addWidget(new QLabel(QStringLiteral("Exclude:"), box));
    m_exclude = named(new QLineEdit(box), QStringLiteral("txtExclude"));
    m_exclude->setPlaceholderText(QStringLiteral("470.000-478.000, ..."));
    row->addWidget(m_exclude, 1);

    connect(m_guards, &QComboBox::currentIndexChanged, this, &PlanWindow::recheck);
    connect(m_useTv, &QCheckBox::toggled, this, &PlanWindow::updatePicture);
    connect(m_tvChannels, &QLineEdit::editingFinished, this, &PlanWindow::updatePicture);
    connect(m_useScan, &QCheckBox::toggled, this, &PlanWindow::updatePicture);
    connect(m_threshold, &QDoubleSpinBox::valueChanged, this, &PlanWindow::updatePicture);
    connect(m_exclude, &QLineEdit::editingFinished, this, &PlanWindow::updatePicture);
    return box;
}

QWidget *PlanWindow::buildButtons()
{
    auto *box = new QWidget(this);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    const auto button = [&](const char *text, const char *name, void (PlanWindow::*slot)()) {
        auto *b = named(new QPushButton(QString::fromLatin1(text), box), QString::fromLatin1(name));
        connect(b, &QPushButton::clicked, this, slot);
        row->addWidget(b);
        return b;
    };
    m_cmdCompute = button("Compute", "cmdCompute", &PlanWindow::compute);
    m_cmdApply = button("Apply", "cmdApply", &PlanWindow::apply);
    m_cmdUndo = button("Undo", "cmdUndo", &PlanWindow::undo);
    row->addStretch(1);
    button("Export CSV...", "cmdExportCsv", &PlanWindow::exportCsv);
    button("Export List...", "cmdExportList", &PlanWindow::exportList);
    button("Import List...", "cmdImportList", &PlanWindow::importList);
    m_cmdApply->setEnabled(false);
    m_cmdUndo->setEnabled(false);
    return box;
}

void PlanWindow::scheduleRefresh()
{
    // A deploy changes one receiver per pass; the table catches up once at its end.
    if (!m_deploying)
        m_refreshTimer.start();
}

void PlanWindow::refresh()
{
    std::vector<LineCarrier> line = lineCarriers(m_ctx.bus.table().found());
    const auto addresses = [](const std::vector<LineCarrier> &l) {
        std::vector<int> a;
        for (const LineCarrier &c : l)
            a.push_back(c.address);
        return a;
    };
    // A proposal belongs to the receivers it was made for.
    if (addresses(line) != addresses(m_line) && !m_deploying) {
        m_proposed.clear();
        m_undo.clear();
    }
    m_line = std::move(line);
    recheck();
}

void PlanWindow::recheck()
{
    std::vector<int> carriers;
    QStringList labels;
    for (const LineCarrier &c : m_line) {
        carriers.push_back(c.frequencyKHz);
        labels << QStringLiteral("%1").arg(c.address, 2, 10, QLatin1Char('0'));
    }
    for (const int f : m_imported) {
        carriers.push_back(f);
        labels << mhzText(f);
    }
    const std::vector<Conflict> conflicts =
        findConflicts(carriers, parseGuards(m_guards->currentText()).value_or(Guards{}));
    const int lineCount = static_cast<int>(m_line.size());
    m_states = carrierStates(conflicts, carriers, lineCount, labels);
    m_currentConflicted = conflictedCarriers(conflicts, lineCount);
    fillTable();
    updatePicture();
}

void PlanWindow::fillTable()
{
    const QSignalBlocker block(m_table);
    const int rows = static_cast<int>(m_line.size());
    m_table->setRowCount(rows);
    for (int row = 0; row < rows; ++row) {
        const LineCarrier &c = m_line[static_cast<std::size_t>(row)];
        auto *lock = new QTableWidgetItem;
        lock->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        lock->setCheckState(m_lockedAddresses.contains(c.address) ? Qt::Checked : Qt::Unchecked);
        m_table->setItem(row, ColLock, lock);
        m_table->setItem(row, ColAddress, cell(QString::number(c.address)));
        m_table->setItem(row, ColName, cell(c.name));
        m_table->setItem(row, ColBand,
                         cell(mhzText(c.bandLowKHz) + QStringLiteral(" - ") + mhzText(c.bandHighKHz)));
        m_table->setItem(
            row, ColFrequency,
            cell(mhzText(c.frequencyKHz) + (c.online ? QString() : QStringLiteral(" (offline)"))));
        auto *state = cell(m_states.value(row));
        state->setToolTip(state->text());
        if (state->text() != QLatin1String("clean"))
            state->setForeground(Qt::red);
        m_table->setItem(row, ColState, state);
        QString proposed;
        if (static_cast<std::size_t>(row) < m_proposed.size()) {
            const int f = m_proposed[static_cast<std::size_t>(row)];
            proposed = f < 0                 ? QStringLiteral("not placed")
                       : f == c.frequencyKHz ? mhzText(f) + QStringLiteral(" (unchanged)")
                                             : mhzText(f);
        }
        m_table->setItem(row, ColProposed, cell(proposed));
        if (!m_table->item(row, ColDeploy))
            m_table->setItem(row, ColDeploy, cell(QString()));
    }
}

std::pair<int, int> PlanWindow::lineBandKHz() const
{
    if (m_line.empty())
        return {kDefaultLowKHz, kDefaultHighKHz};
    int low = m_line.front().bandLowKHz;
    int high = m_line.front().bandHighKHz;
    for (const LineCarrier &c : m_line) {
        low = std::min({low, c.bandLowKHz, c.frequencyKHz});
        high = std::max({high, c.bandHighKHz, c.frequencyKHz});
    }
    return {low, std::max(high, low + kRasterKHz)};
}

bool PlanWindow::collectExclusions(PlanExclusions &out, std::vector<std::pair<int, int>> &shownRanges)
{
    const auto [low, high] = lineBandKHz();
    const auto ranges = parseRanges(m_exclude->text());
    if (!ranges) {
        setStatus(QStringLiteral("The exclusions must be MHz ranges LO-HI separated by commas, such as "
                                 "\"470.000-478.000\"."));
        return false;
    }
    out.rangesKHz = *ranges;
    shownRanges = *ranges;
    if (m_useTv->isChecked()) {
        const auto channels = parseChannels(m_tvChannels->text());
        if (!channels) {
            setStatus(QStringLiteral("The TV channels in use must be channel numbers separated by commas."));
            return false;
        }
        out.tvRegion = checkedTvRegion(m_ctx.state.tvRegion);
        out.tvChannels = *channels;
        const auto tv = tvChannelRanges(out.tvRegion, out.tvChannels, low, high);
        shownRanges.insert(shownRanges.end(), tv.begin(), tv.end());
    }
    if (m_useScan->isChecked()) {
        for (const std::vector<ScanPoint> *points :
             {&m_session.lastScan().points(), &std::as_const(m_filePoints)}) {
            const std::vector<int> above = signalsAbove(*points, m_threshold->value());
            out.signalsKHz.insert(out.signalsKHz.end(), above.begin(), above.end());
        }
    }
    out.signalsKHz.insert(out.signalsKHz.end(), m_imported.begin(), m_imported.end());
    return true;
}

void PlanWindow::updatePicture()
{
    PlanExclusions exclusions;
    std::vector<std::pair<int, int>> shown;
    if (!collectExclusions(exclusions, shown))
        return;
    BandPicture picture;
    std::tie(picture.lowKHz, picture.highKHz) = lineBandKHz();
    picture.excludedKHz = shown;
    picture.signalsKHz = exclusions.signalsKHz;
    const Guards guards = parseGuards(m_guards->currentText()).value_or(Guards{});
    for (const LineCarrier &c : m_line)
        picture.currentKHz.push_back(c.frequencyKHz);
    picture.currentConflicted = m_currentConflicted;
    for (const int f : m_proposed)
        if (f >= 0)
            picture.proposedKHz.push_back(f);
    picture.proposedConflicted = conflictedCarriers(findConflicts(picture.proposedKHz, guards),
                                                    static_cast<int>(picture.proposedKHz.size()));
    m_band->setPicture(picture);
}

void PlanWindow::compute()
{
    if (m_planner)
        return;
    PlanRequest request;
    std::vector<std::pair<int, int>> shown;
    if (!collectExclusions(request.exclusions, shown))
        return;
    request.guards = parseGuards(m_guards->currentText()).value_or(Guards{});
    for (const LineCarrier &c : m_line) {
        PlanReceiver r{c.bandLowKHz, c.bandHighKHz, std::nullopt};
        // A receiver that does not answer cannot be retuned: it stays where it is.
        if (m_lockedAddresses.contains(c.address) || !c.online)
            r.lockedKHz = c.frequencyKHz;
        request.receivers.push_back(r);
    }
    m_planner = std::make_unique<Planner>(request, kBudgetMs, 1);
    m_slicesLeft = kBudgetMs / kSliceMs;
    m_cmdCompute->setEnabled(false);
    m_cmdApply->setEnabled(false);
    setStatus(QStringLiteral("Computing..."));
    m_computeTimer.start();
}

void PlanWindow::computeSlice()
{
    if (!m_planner)
        return;
    if (m_planner->run(kSliceMs) && --m_slicesLeft > 0)
        return;
    finishCompute();
}

void PlanWindow::finishCompute()
{
    m_computeTimer.stop();
    const PlanResult result = m_planner->best();
    m_planner.reset();
    m_proposed = result.frequencyKHz;
    QString text = QStringLiteral("Placed %1 of %2 receivers").arg(result.placed).arg(m_line.size());
    if (result.provenMaximum && result.placed < static_cast<int>(m_line.size()))
        text += QStringLiteral(", the most this band allows");
    QStringList missing;
    for (std::size_t i = 0; i < m_proposed.size() && i < m_line.size(); ++i)
        if (m_proposed[i] < 0)
            missing << QString::number(m_line[i].address);
    if (!missing.isEmpty())
        text += QStringLiteral("; not placed: ") + missing.join(QStringLiteral(", "));
    if (!result.lockedConflicts.empty())
        text += QStringLiteral("; the locked receivers conflict among themselves");
    setStatus(text + QLatin1Char('.'));
    m_cmdCompute->setEnabled(true);
    m_cmdApply->setEnabled(!m_deploying);
    fillTable();
    updatePicture();
    emit computed();
}

void PlanWindow::setStatus(const QString &text)
{
    m_status->setText(text);
}

} // namespace zun
