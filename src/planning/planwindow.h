#pragma once

#include "coordination/linecheck.h"
#include "coordination/planner.h"
#include "coordination/scancsv.h"
#include "session/frequencydeploy.h"

#include <QSet>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace zun {

class BandView;
class Session;
struct Context;

// "Frequency Plan": the line's receivers with their frequencies checked
// against each other, a plan computed for them, and that plan put on the
// receivers and taken back. The session's receiver layer and deploy do the
// line work; this window shows what they report.
class PlanWindow : public QWidget
{
    Q_OBJECT
public:
    enum Column { ColLock, ColAddress, ColName, ColBand, ColFrequency, ColState, ColProposed, ColDeploy };

    explicit PlanWindow(Session &session, QWidget *parent = nullptr);

    // The proposed frequency per receiver (kHz, -1: not placed); empty before Compute.
    const std::vector<int> &proposed() const { return m_proposed; }
    [[nodiscard]] bool computing() const { return m_planner != nullptr; }
    // The settings file written before the last deploy.
    QString backupPath() const { return m_backupPath; }

    void compute();
    void apply();
    void undo();
    void exportCsv();
    void exportList();
    void importList();
    void addScanFile();

signals:
    void computed();
    void deployFinished();

private:
    QWidget *buildControls();
    QWidget *buildButtons();
    void scheduleRefresh();
    void refresh();
    void recheck();
    void fillTable();
    void updatePicture();
    void computeSlice();
    void finishCompute();
    [[nodiscard]] bool collectExclusions(PlanExclusions &out, std::vector<std::pair<int, int>> &shownRanges);
    std::pair<int, int> lineBandKHz() const;
    void startDeploy(std::vector<DeployTarget> targets, const QString &what);
    void showOutcome(int index, DeployOutcome outcome);
    void deployDone();
    [[nodiscard]] bool writeFile(const QString &path, const QString &text);
    void setStatus(const QString &text);

    Session &m_session;
    Context &m_ctx;
    QTableWidget *m_table = nullptr;
    BandView *m_band = nullptr;
    QComboBox *m_guards = nullptr;
    QCheckBox *m_useTv = nullptr;
    QLineEdit *m_tvChannels = nullptr;
    QCheckBox *m_useScan = nullptr;
    QDoubleSpinBox *m_threshold = nullptr;
    QLineEdit *m_exclude = nullptr;
    QLabel *m_scanFiles = nullptr;
    QLabel *m_status = nullptr;
    QPushButton *m_cmdCompute = nullptr;
    QPushButton *m_cmdApply = nullptr;
    QPushButton *m_cmdUndo = nullptr;

    std::vector<LineCarrier> m_line;
    QStringList m_states;
    std::vector<bool> m_currentConflicted;
    std::vector<int> m_proposed;
    QSet<int> m_lockedAddresses;
    std::vector<ScanPoint> m_filePoints;
    int m_fileCount = 0;
    std::vector<int> m_imported; // another user's frequencies to check the line against

    std::unique_ptr<Planner> m_planner;
    int m_slicesLeft = 0;
    QTimer m_computeTimer;
    QTimer m_refreshTimer;

    bool m_deploying = false;
    QString m_deployWhat;
    std::vector<DeployTarget> m_undo;
    QString m_backupPath;
    int m_outcomes[3] = {};
};

} // namespace zun
