// Deploying the plan, taking it back, and the plan's files.
#include "planning/planwindow.h"

#include "coordination/guards.h"
#include "coordination/planfiles.h"
#include "core/context.h"
#include "platform/dialogs.h"
#include "platform/regularfile.h"
#include "receivers/frequency.h"
#include "session/session.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QTableWidget>

#include <algorithm>
#include <optional>

namespace zun {

namespace {
const QString kPlanCsvFilter = QStringLiteral("Frequency Plan(*.csv)|*.csv");
const QString kListFilter = QStringLiteral("Frequency List(*.txt)|*.txt");
const QString kImportFilter = QStringLiteral("Frequency List(*.txt *.csv)|*.txt *.csv");
const QString kScanFilter = QStringLiteral("Scan CSV(*.csv)|*.csv");
constexpr qint64 kLargestImport = 16 * 1024 * 1024;

// The text of a file the user chose, or nothing once the user was told why
// (what: "a frequency list", "a scan").
std::optional<QString> readImport(Dialogs &dialogs, const QString &path, const QString &what)
{
    QFile in;
    if (const QString error = openRegularFile(in, path); !error.isEmpty()) {
        dialogs.message(QStringLiteral("%1 could not be read: %2").arg(path, error));
        return std::nullopt;
    }
    if (in.size() > kLargestImport) {
        dialogs.message(QStringLiteral("%1 is too large to be %2.").arg(path, what));
        return std::nullopt;
    }
    return QString::fromUtf8(in.read(kLargestImport));
}

QString codeOf(const Receiver &r)
{
    return r.manualFreq ? r.manualFreqCode : r.channelFreqCode;
}
} // namespace

void PlanWindow::apply()
{
    if (m_deploying || m_planner)
        return;
    std::vector<DeployTarget> targets;
    std::vector<DeployTarget> undo;
    for (std::size_t i = 0; i < m_proposed.size() && i < m_line.size(); ++i) {
        const LineCarrier &c = m_line[i];
        if (m_proposed[i] < 0 || m_proposed[i] == c.frequencyKHz || !c.online)
            continue;
        targets.push_back({c.index, codeFromMhz(m_proposed[i] / 1000.0)});
        undo.push_back({c.index, codeOf(m_ctx.bus.table().at(c.index))});
    }
    if (targets.empty()) {
        setStatus(QStringLiteral("The plan changes no receiver."));
        return;
    }
    const auto unplaced = std::count(m_proposed.begin(), m_proposed.end(), -1);
    if (unplaced > 0 &&
        m_ctx.platform.dialogs.message(
            QStringLiteral("%1 receivers have no place in the plan and keep their frequencies, which may "
                           "conflict with it. Apply the plan anyway?")
                .arg(unplaced),
            MessageButtons::YesNo) != MessageAnswer::Yes)
        return;
    if (m_ctx.bus.workMode() != WorkMode::Polling) {
        m_ctx.platform.dialogs.message(
            QStringLiteral("The receivers are retuned between polls: close the detail window first."));
        return;
    }
    // The line as it was, before anything is sent: the way back even if this
    // program does not live to press Undo.
    QString error;
    const QString path = m_session.saveLineBackup(&error);
    if (path.isEmpty()) {
        m_ctx.platform.dialogs.message(
            QStringLiteral("The settings could not be saved before the plan is applied (%1); nothing was "
                           "changed.")
                .arg(error));
        return;
    }
    m_backupPath = path;
    m_undo = std::move(undo);
    startDeploy(std::move(targets), QStringLiteral("Applied"));
}

void PlanWindow::undo()
{
    if (m_deploying || m_undo.empty())
        return;
    if (m_ctx.bus.workMode() != WorkMode::Polling) {
        m_ctx.platform.dialogs.message(
            QStringLiteral("The receivers are retuned between polls: close the detail window first."));
        return;
    }
    startDeploy(std::exchange(m_undo, {}), QStringLiteral("Undone"));
}

void PlanWindow::startDeploy(std::vector<DeployTarget> targets, const QString &what)
{
    for (int row = 0; row < m_table->rowCount(); ++row)
        m_table->item(row, ColDeploy)->setText(QString());
    for (const DeployTarget &t : targets)
        if (t.index < m_table->rowCount())
            m_table->item(t.index, ColDeploy)->setText(QStringLiteral("waiting"));
    std::fill(std::begin(m_outcomes), std::end(m_outcomes), 0);
    m_deployWhat = what;
    m_deploying = true;
    m_cmdApply->setEnabled(false);
    m_cmdUndo->setEnabled(false);
    m_cmdCompute->setEnabled(false);
    setStatus(QStringLiteral("Retuning %1 receivers between polls...").arg(targets.size()));
    m_session.deploy().start(std::move(targets));
}

void PlanWindow::showOutcome(int index, DeployOutcome outcome)
{
    if (!m_deploying)
        return;
    ++m_outcomes[static_cast<int>(outcome)];
    if (index < m_table->rowCount())
        m_table->item(index, ColDeploy)->setText(deployOutcomeText(outcome));
}

void PlanWindow::deployDone()
{
    if (!m_deploying)
        return;
    m_deploying = false;
    QString text = QStringLiteral("%1: %2 done, %3 no response, %4 not taken.")
                       .arg(m_deployWhat)
                       .arg(m_outcomes[static_cast<int>(DeployOutcome::Done)])
                       .arg(m_outcomes[static_cast<int>(DeployOutcome::NoResponse)])
                       .arg(m_outcomes[static_cast<int>(DeployOutcome::NotTaken)]);
    if (!m_backupPath.isEmpty())
        text += QStringLiteral(" The settings before are saved in %1.").arg(m_backupPath);
    m_cmdCompute->setEnabled(true);
    m_cmdApply->setEnabled(!m_proposed.empty());
    m_cmdUndo->setEnabled(!m_undo.empty());
    refresh();
    setStatus(text);
    emit deployFinished();
}

bool PlanWindow::writeFile(const QString &path, const QString &text)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(text.toUtf8()) >= 0 && file.commit())
        return true;
    m_ctx.platform.dialogs.message(
        QStringLiteral("%1 could not be written: %2").arg(path, file.errorString()));
    return false;
}

void PlanWindow::exportCsv()
{
    // The plan when there is one, else the line as it runs.
    std::vector<PlanEntry> entries;
    for (std::size_t i = 0; i < m_line.size(); ++i) {
        const int f = i < m_proposed.size() ? m_proposed[i] : m_line[i].frequencyKHz;
        if (f >= 0)
            entries.push_back({m_line[i].address, m_line[i].name, f});
    }
    const QString path = m_ctx.platform.dialogs.saveFileName(kPlanCsvFilter);
    if (!path.isEmpty() && writeFile(path, exportPlanCsv(entries)))
        setStatus(QStringLiteral("%1 frequencies written to %2.").arg(entries.size()).arg(path));
}

void PlanWindow::exportList()
{
    std::vector<int> frequencies;
    for (std::size_t i = 0; i < m_line.size(); ++i) {
        const int f = i < m_proposed.size() ? m_proposed[i] : m_line[i].frequencyKHz;
        if (f >= 0)
            frequencies.push_back(f);
    }
    std::sort(frequencies.begin(), frequencies.end());
    const QString path = m_ctx.platform.dialogs.saveFileName(kListFilter);
    if (!path.isEmpty() && writeFile(path, exportFrequencyList(frequencies)))
        setStatus(QStringLiteral("%1 frequencies written to %2.").arg(frequencies.size()).arg(path));
}

void PlanWindow::importList()
{
    const QString path = m_ctx.platform.dialogs.openFileName(kImportFilter);
    if (path.isEmpty())
        return;
    const auto text = readImport(m_ctx.platform.dialogs, path, QStringLiteral("a frequency list"));
    if (!text)
        return;
    const FrequencyListResult list = importFrequencyList(*text);
    if (!list.ok()) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 was not imported.\n%2").arg(path, list.error));
        return;
    }
    m_imported = list.frequenciesKHz;
    recheck();
    const auto clean = std::count(m_states.begin(), m_states.end(), QStringLiteral("clean"));
    setStatus(QStringLiteral("%1 frequencies from %2 checked against the line: %3 of %4 receivers clean.")
                  .arg(m_imported.size())
                  .arg(path)
                  .arg(clean)
                  .arg(m_line.size()));
}

void PlanWindow::addScanFile()
{
    const QString path = m_ctx.platform.dialogs.openFileName(kScanFilter);
    if (path.isEmpty())
        return;
    // Read line by line: a file of one endless line is refused at its bound
    // instead of being read and decoded whole first.
    QFile in;
    if (const QString error = openRegularFile(in, path); !error.isEmpty()) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 could not be read: %2").arg(path, error));
        return;
    }
    if (in.size() > kLargestImport) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 is too large to be a scan.").arg(path));
        return;
    }
    const ScanCsvResult scan = readScanCsv(in, 0.0, 100000.0, kLargestImport);
    if (!scan.ok()) {
        m_ctx.platform.dialogs.message(QStringLiteral("%1 was not imported.\n%2").arg(path, scan.error));
        return;
    }
    m_filePoints.insert(m_filePoints.end(), scan.points.begin(), scan.points.end());
    ++m_fileCount;
    m_scanFiles->setText(QStringLiteral("%1 file(s)").arg(m_fileCount));
    m_useScan->setChecked(true);
    updatePicture();
}

} // namespace zun
